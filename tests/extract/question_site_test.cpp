#include "extract/Cls4QASite.h"
#include "platform/memory_file_system.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace kelb::extract {
namespace {

using Text = std::u16string;

struct TextCase {
    const char* fault;
    Text html, expected;
};

TEST(ExtQTitle, TakesTheArticlesOwnHeading) {
    const Text block = u"<h1>先</h1><div id=\"article\">"; // 18 units from the block's start to its end
    const Text heading91(91, u'题');
    for (const TextCase& c : std::initializer_list<TextCase>{
             {"behind the block", block + u"<h1>标题</h1>", u"标题"},
             {"20 units from the block's start", block + u"12<h1>标题</h1>", u"标题"},
             {"21", block + u"123<h1>标题</h1>", u""},
             {"100 units with its tag", block + u"<h1>" + heading91 + u"12345</h1>", heading91 + u"12345"},
             {"101", block + u"<h1>" + heading91 + u"123456</h1>", u""},
             {"no block", u"<h1>标题</h1>", u""},
             {"no end", block + u"<h1>标题", u""},
         }) {
        EXPECT_EQ(Cls4QASite::extQTitle(c.html), c.expected) << c.fault;
    }
}

TEST(ExtQContent, SkipsTheFirstInnerBlock) {
    const Text body = u"</div><div id=\"article_body\">";
    for (const TextCase& c : std::initializer_list<TextCase>{
             {"between two closing tags", body + u"<div>甲</div> 问<br>题 </div>丙</div>", u" 问<br>题 "},
             {"only one", body + u"甲</div>乙", u""},
             {"none", body + u"甲", u""},
             {"no body", u"</div>甲</div>", u""},
         }) {
        EXPECT_EQ(Cls4QASite::extQContent(c.html), c.expected) << c.fault;
    }
}

/// Draws the names one after the other.
class NextRandom final : public platform::Random {
public:
    void reseed() override {}
    double next() override { return (drawn_++ % 2) * 0.5; }
    std::uint64_t bits() override { return 0; }

private:
    int drawn_ = 0;
};

class ExtAContent : public testing::Test {
protected:
    ExtAContent() { files_.writeFile(u"/app/ADMarks.txt", ""); }

    Text extract(const Text& html) {
        rewrite::ClsSmart smart(files_, u"/app");
        return Cls4QASite(smart, names_, random_).extAContent(html);
    }
    static Text block(const Text& answer) { return u"<div class=\"body\">" + answer + u"</div>"; }

    platform::MemoryFileSystem files_;
    UserNames names_{{u"一", u"二", u"三"}};
    NextRandom random_;
};

TEST_F(ExtAContent, HeadsEachAnswerWithAName) {
    for (const TextCase& c : std::initializer_list<TextCase>{
             {"two answers", block(u"换行管试试看") + block(u"测一下电压吧"),
              u"一：换行管试试看\r\n\r\n\r\n二：测一下电压吧\r\n\r\n\r\n"},
             {"blanks and one line end in front go", block(u" \r\n\r\n换行管试试看 "),
              u"一：\r\n换行管试试看\r\n\r\n\r\n"},
             {"five units say nothing", block(u"换行管试试"), u""},
             {"a repeated answer", block(u"换行管试试看") + block(u"换行管试试看"), u"一：换行管试试看\r\n\r\n\r\n"},
             {"… is not one when a short one stood between",
              block(u"换行管试试看") + block(u"好的") + block(u"换行管试试看"),
              u"一：换行管试试看\r\n\r\n\r\n二：换行管试试看\r\n\r\n\r\n"},
             {"without a Chinese character", block(u"abcdefgh"), u""},
             {"not closed: the walk ends", u"class=\"body\">换行管试试看", u""},
             {"no answer", u"换行管试试看</div>", u""},
         }) {
        random_ = {};
        EXPECT_EQ(extract(c.html), c.expected) << c.fault;
    }
}

TEST_F(ExtAContent, LooksAtTwentyAnswers) {
    Text html, expected;
    for (int answer = 0; answer < 25; ++answer) {
        const Text text = Text(u"换行管试试看") + static_cast<char16_t>(u'a' + answer);
        // The third says nothing and counts all the same.
        html += block(answer == 2 ? u"好" : text);
        if (answer < 20 && answer != 2) {
            expected += u"一：" + text + u"\r\n\r\n\r\n";
        }
    }
    names_ = UserNames(std::vector<Text>{u"一"});
    EXPECT_EQ(extract(html), expected);
}

TEST_F(ExtAContent, NeedsNamesForWhatItKeeps) {
    names_ = UserNames();
    EXPECT_EQ(extract(block(u"好")), u"");
    EXPECT_THROW(extract(block(u"换行管试试看")), std::out_of_range);
}

} // namespace
} // namespace kelb::extract
