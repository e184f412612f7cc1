#pragma once

#include <array>
#include <string_view>

namespace kelb::rewrite {

struct ChipPrefix {
    std::u16string_view prefix;
    std::u16string_view maker;
    std::u16string_view description; ///< for display
};

/// How the names of chip families begin, in the order in which searchICCode tries them. Room for 61. Codes are
/// upper-cased before they are compared, so "uPC" is never found, and "M" takes what "MC" was meant for. Kept, as are
/// the ASCII colons of rows 3 and 10.
inline constexpr std::array<ChipPrefix, 61> kChipPrefixes{{
    {u"CH", u"长虹", u"长虹机芯：CH"},
    {u"TDA", u"飞利浦", u"飞利浦机芯：TDA"},
    {u"TA", u"东芝", u"东芝生产的模拟机芯: TA"},
    {u"TC", u"东芝", u"东芝生产的数字机芯：TC"},
    {u"BA", u"东洋", u"东洋电机或者富士通机芯：BA"},
    {u"HA", u"日立", u"日立生产的模拟机芯：HA"},
    {u"HD", u"日立", u"日立生产的数字机芯：HD"},
    {u"AN", u"松下", u"松下生产的模拟机芯：AN"},
    {u"MN", u"松下", u"松下生产的CPU型号：MN"},
    {u"KA", u"三星", u"三星生产的模拟机芯: KA"},
    {u"KIA", u"起亚", u"起亚电子生产的IC型号：KIA"},
    {u"OM", u"飞利浦", u"台湾生产的飞利浦IC型号：OM"},
    {u"LA", u"三洋", u"日本三洋生产的模拟机芯：LA"},
    {u"uPC", u"NEC", u"日本NEC公司生产的模拟机芯：uPC"},
    {u"M", u"三菱", u"日本三菱公司生产的IC型号：M"},
    {u"MC", u"MOTOROLA", u"美国MOTOROLA公司的IC型号：MC"},
}};

} // namespace kelb::rewrite
