#pragma once

#include <array>
#include <string_view>

namespace kelb::rewrite {

struct Problem {
    std::u16string_view keyword;
    std::u16string_view alternatives; ///< parted by "|"; kept for a later use
};

/// Words that name a fault, in the order in which smartGetProblem tries them; the first empty row ends its search.
/// Room for 501. Row 10 joins its phrases with the full-width bar, so they are one alternative. Kept.
inline constexpr std::array<Problem, 501> kProblems{{
    {u"黑屏", u"屏没有亮|屏幕无显示"},
    {u"无伴音", u"没得声音|听不到伴音"},
    {u"主电压高", u"+B电压超高|+B电压过高"},
    {u"一条线", u"水平一条亮线|屏幕上一条亮线"},
    {u"不开机", u"开不了机|开机没有反应"},
    {u"抖动", u"图像颤动|图不稳左右抖动"},
    {u"消磁", u"去除显像管上面的剩磁|把显像显上的色斑去掉"},
    {u"声音沙", u"声音不好了|音质不行了"},
    {u"不能开机", u"开不了机|开机没有反应"},
    {u"指示灯不亮", u"指示灯不亮｜指示灯没亮"},
    {u"不起振", u"不起振|没震荡"},
}};

} // namespace kelb::rewrite
