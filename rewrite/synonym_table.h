#pragma once

#include <array>
#include <string_view>

namespace kelb::rewrite {

struct Synonym {
    std::u16string_view term;
    std::u16string_view alternatives; ///< parted by "|"
};

/// Other wordings of repair terms. No operation chooses from them yet; rows keep their numbers, so the empty ones stay,
/// and so does the empty alternative at the end of row 3.
inline constexpr std::array<Synonym, 22> kSynonyms{{
    {u"请问", u"我问下|给我讲下"},
    {u"行包", u"高压包|行输出变压器|行变|高压泵"},
    {u"长虹", u"节能长虹|高清长虹|"},
    {u"正常", u"还可以|没什么毛病|无明显故障"},
    {u"BSC", u"高压包的型号：BSC|这个高压泵的型号：BSC"},
    {u"雷击", u"遭遇雷打|雷电击中"},
    {u"无图像", u"没有画面|没有显示|图相没有"},
    {u"整流", u"交流变直流桥式整流|二极管整流|桥堆整流"},
    {u"CPU", u"电脑块CPU|大脑CPU"},
    {u"烧", u"遭烧|瞬间烧"},
    {u"关机", u"关了|停机了"},
    {u"维修", u"修理|维护"},
    {},
    {u"高手", u"电视专业维修员|电视维修工程师|维修专家"},
    {u"黑屏", u"不显示屏幕黑了|没得显示黑屏了"},
    {u"自制", u"自己做一个|土办法制造"},
    {},
    {u"行流", u"行输出部分的电流|开关变压器到行变的电流|开关变压器到高压包的电流"},
    {u"不开机", u"开不起了|开机无任何反应|不通电了"},
    {u"方格", u"方框框|横竖起杠|横杠杠和竖杠杠"},
    {u"换板", u"电视主板换了|更换电视主机板"},
    {},
}};

} // namespace kelb::rewrite
