#pragma once

#include <array>
#include <string_view>

namespace kelb::rewrite {

/// Brands in the order in which getPinPai tries them: the first that a text contains wins, wherever it stands. Letter
/// case counts. "三星" stands among the television brands and again among the monitors. Kept.
inline constexpr std::array<std::u16string_view, 75> kBrands{
    // television sets
    u"长虹", u"康佳", u"创维", u"海尔", u"TCL", u"海信", u"组装机", u"厦华", u"熊猫", u"乐华", u"牡丹", u"康力",
    u"金星", u"高路华", u"福日", u"北京", u"三星", u"索尼", u"松下", u"东芝", u"日立", u"三洋", u"夏普", u"飞利浦",
    u"PHILIPS",
    // monitors
    u"AOC", u"优派", u"ViewSonic", u"三星", u"SAMSUNG", u"Great Wall", u"长城", u"美格", u"MAG", u"现代", u"HYUNDAI",
    u"新特丽", u"NESO", u"HPC", u"爱国者", u"aigo", u"唯冠科技", u"EMC", u"玛雅", u"MAYA", u"神州数码",
    u"Digital China", u"宏碁", u"acer", u"康冠", u"KTC", u"TopView", u"方正", u"FOUNDER", u"易美逊", u"Envision",
    u"大宇", u"DAEWOO", u"唯一", u"WEIYI", u"明基", u"BenQ", u"大水牛", u"新科", u"Shinco", u"玛思达", u"Matador",
    u"美腾", u"MTT", u"诚洲", u"ADi", u"MicroStar", u"日电", u"NEC", u"三菱"};

} // namespace kelb::rewrite
