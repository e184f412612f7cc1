#pragma once

#include <array>
#include <string_view>

namespace kelb::rewrite {

enum class Occurrences { All, First };
enum class LetterCase { Counts, Ignored };

/// One replacement of smartReplaceNormal. kBrandPlace in `with` stands for the brand that the caller names.
struct WordingRule {
    std::u16string_view find;
    std::u16string_view with;
    Occurrences occurrences = Occurrences::All;
    LetterCase letterCase = LetterCase::Counts;
};

inline constexpr std::u16string_view kBrandPlace = u"{brand}";

/// Applied one after the other, each to what the one before it left, to a text in upper case. Hence the brand that row
/// 1 puts in is open to the rows behind it, and only a search without regard to case can find row 21. Rows 11 and 12
/// turn right words into others. All kept.
inline constexpr std::array<WordingRule, 22> kWordingRules{{
    {u"师傅", u"修{brand}的超哥"},
    {u"四川", u""},
    {u"长红", u"长虹"},
    {u"怎么了", u"出了什么故障或毛病", Occurrences::First},
    {u"？", u" …高手回答", Occurrences::First},
    {u"国产", u"中国"},
    {u"ＣＨ", u"CH"},
    {u"请教", u"请问"},
    {u"[原创]", u""},
    {u"用户已被锁定", u""},
    {u"那里", u"哪里"},
    {u"实用", u"使用"},
    {u"电原", u"电源"},
    {u"前驴技穷", u"黔驴技穷"},
    {u"问提", u"问题"},
    {u"夏华", u"厦华"},
    {u"飞利蒲", u"飞利浦"},
    {u"飞利普", u"飞利浦"},
    {u"谢谢，", u""},
    {u"谢谢！", u""},
    {u"bingxiang", u"", Occurrences::All, LetterCase::Ignored},
    {u"\r\n", u"<br>"},
}};

} // namespace kelb::rewrite
