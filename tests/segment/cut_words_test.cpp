#include "platform/code_page.h"
#include "platform/memory_file_system.h"
#include "segment/ClsFenCi.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelb::segment {
namespace {

using Text = std::u16string;

class CutWords : public testing::Test {
protected:
    void write(std::u16string_view text) { files_.writeFile(u"/app/SogouLabDic.dic", platform::encode936(text)); }
    /// Words parted by "|", each with "/" and its part of speech when it has one.
    Text cut(std::u16string_view text) {
        Text shown;
        for (const Word& word : fenCi_.segment(text)) {
            shown.append(shown.empty() ? u"" : u"|").append(word.text);
            if (!word.partOfSpeech.empty()) {
                shown.append(u"/").append(word.partOfSpeech);
            }
        }
        return shown;
    }

    platform::MemoryFileSystem files_;
    ClsFenCi fenCi_{files_, u"/app"};
};

TEST_F(CutWords, TakesTheMostProbableWay) {
    // 512 in all.
    write(u"研究\t64\tV\n研究生\t8\tN\n生命\t64\tN\n命\t16\tN\n起源\t32\tN\n"
          u"甲乙\t1\tX\n甲\t32\tA\n乙\t8\tB\n丙丁\t2\tX\n丙\t32\tA\n丁\t32\tB\n"
          u"子丑\t16\tX\n丑寅\t16\tY\n子\t8\tA\n寅\t8\tB\n卯辰\t4\tX\n卯\t2\tA\n辰巳\t4\tY\n"
          u"午未\t3\tX\n午\t2\tA\n未申\t1\tY\nCPU\t8\tN\n的\t149\tU");
    struct Case {
        const char* fault;
        Text text, expected;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"64 * 64 beats 8 * 16", u"研究生命起源", u"研究/V|生命/N|起源/N"},
             {"the longest word where nothing speaks against it", u"研究生的", u"研究生/N|的/U"},
             {"one word of 1/512 beats 32/512 * 8/512", u"甲乙", u"甲乙/X"},
             {"2/512 equals 32/512 * 32/512: the longer first word", u"丙丁", u"丙丁/X"},
             {"16 * 8 both ways: the longer first word", u"子丑寅", u"子丑/X|寅/B"},
             {"a character that is no word stands alone", u"修命理", u"修|命/N|理"},
             {"… and counts as met once, not more: 2 * 4 beats 4 * 1", u"卯辰巳", u"卯/A|辰巳/Y"},
             {"… and not less: 3 * 1 beats 2 * 1", u"午未申", u"午未/X|申"},
             {"marks and blanks part runs and are passed over", u"研究，生 命。", u"研究/V|生|命/N"},
             {"full-width marks that stay in running text", u"研究、生命", u"研究/V|、|生命/N"},
             {"codes are words; outer hyphens go", u"-CH-16-的CPU--12V.", u"CH-16|的/U|CPU--12V"},
             {"a code that the dictionary has", u"研究CPU", u"研究/V|CPU/N"},
             {"hyphens alone", u"--", u""},
             {"nothing", u"", u""},
         }) {
        EXPECT_EQ(cut(c.text), c.expected) << c.fault;
    }
}

TEST_F(CutWords, UnusableFrequenciesCountAsOnce) {
    // 16 in all: 甲乙 and 丙 count as 1, so 甲|乙丙 has 1/16 * 6/16, 甲乙|丙 1/16 * 1/16.
    write(u"甲乙\t0\tX\n乙丙\t6\tY\n丙\t-5\tZ\n丁\t8\tW");
    EXPECT_EQ(cut(u"甲乙丙"), u"甲|乙丙/Y");
    EXPECT_EQ(cut(u"甲乙丁"), u"甲乙/X|丁/W");
    // More digits than any number here has: all the same great.
    write(u"甲乙\t99999999999999999999999999\tX\n甲\t9\tA\n乙\t9\tB\n");
    EXPECT_EQ(ClsFenCi(files_, u"/app").segment(u"甲乙").size(), 1U);
}

TEST_F(CutWords, WithoutFrequenciesTheLongestWordFirst) {
    write(u"研究\t\tV\n研究生\t\tN\n生命\t x\tN\n起源\t0\tN\n北京大学\t\tN\n大学生\t\tN");
    EXPECT_EQ(cut(u"研究生命起源"), u"研究生/N|命|起源/N");
    EXPECT_EQ(cut(u"北京大学生"), u"北京大学/N|生");
}

TEST_F(CutWords, LongRunsAreCutLikeShortOnes) {
    // Three does not divide the block, so that words lie across its end.
    write(u"电视\t64\tN\n电视机\t16\tN\n机\t16\tN\n视机\t2\tN");
    Text text;
    constexpr std::size_t kWords = 400'000;
    for (std::size_t i = 0; i < kWords; ++i) {
        text += u"电视机";
    }
    std::size_t words = 0;
    fenCi_.segment(text, [&](const Word& word) {
        ++words;
        ASSERT_EQ(word.text, u"电视机");
    });
    EXPECT_EQ(words, kWords);
}

TEST_F(CutWords, NeedsADictionary) {
    EXPECT_THROW(cut(u"电视"), platform::FileError);
    write(u"一二三四五六七八\t1\tN");
    EXPECT_THROW(cut(u"电视"), DictionaryError);
    write(u"电视\t1\tN");
    EXPECT_EQ(cut(u"电视机"), u"电视/N|机") << "tried again";
    write(u"视机\t1\tN");
    EXPECT_EQ(cut(u"电视机"), u"电视/N|机") << "kept";
}

TEST_F(CutWords, ReadsTheDictionaryAnewAfterASave) {
    class StandingPump final : public platform::UiPump {
        void yield() override {}
    } pump;
    write(u"电视\t1\tN");
    EXPECT_EQ(cut(u"电视机"), u"电视/N|机");
    WordDictionary words;
    words.add(u"电视机", u"1", u"N");
    (void)fenCi_.saveSogouLabDic(words, pump);
    EXPECT_EQ(cut(u"电视机"), u"电视机/N");
}

} // namespace
} // namespace kelb::segment
