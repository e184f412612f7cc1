#include "extract/Cls4Discuz.h"
#include "platform/code_page.h"
#include "platform/memory_file_system.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace kelb::extract {
namespace {

using Text = std::u16string;

Text readPage(const char* name) {
    std::ifstream file(std::string(KELB_TEST_DATA "/discuz/") + name, std::ios::binary);
    EXPECT_TRUE(file) << name;
    return platform::decode936(std::string(std::istreambuf_iterator<char>(file), {}));
}

struct FloorCase {
    const char* page;
    std::size_t floors;
    bool success;
    const char16_t* reason;
};

TEST(Split2Floors, CutsAPageIntoPosts) {
    for (const FloorCase& c : std::initializer_list<FloorCase>{
             {"notice_page.html", 0, false, u"old|无楼层标志!|楼层<3，为: 0层"},
             {"short_ids.html", 0, false, u"old|楼层<3，为: 0层"},
             {"one_floor.html", 1, false, u"old|楼层<3，为: 0层"},
             {"two_floors.html", 3, true, u"old|楼层<3，为: 2层"},
             {"unclosed.html", 3, true, u"old"},
             {"first_page.html", 8, true, u"old"},
         }) {
        std::vector<Text> floors{u"old"};
        Text reason = u"old";
        bool success = !c.success;
        Cls4Discuz::split2Floors(readPage(c.page), floors, reason, success);
        EXPECT_EQ(floors.size(), c.floors) << c.page;
        EXPECT_EQ(reason, c.reason) << c.page;
        EXPECT_EQ(success, c.success) << c.page;
    }
}

Text repeat(std::u16string_view text, int times) {
    Text all;
    for (int i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

TEST(Split2Floors, ExaminesAHundredMarkers) {
    const Text floor = u"<div id=\"post_1234\">", other = u"<div id=\"post_rate\">", closing = u"<div id=\"post_new\">";
    struct Case {
        const char* fault;
        Text html;
        std::size_t floors;
        bool success;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"the closing one is the 101st", repeat(floor, 100) + closing, 99, true},
             {"it is the 100th", repeat(floor, 99) + closing + floor, 99, true},
             {"ignored ones count", repeat(other, 98) + repeat(floor, 10), 1, false},
             {"a closing one before any floor is ignored", closing + repeat(floor, 4), 3, true},
             {"nothing behind the closing one", repeat(floor, 2) + closing + repeat(floor, 3), 2, true},
             {"digits of code page 936 are no digits", repeat(u"<div id=\"post_１２３４\">", 5), 0, false},
             {"a marker at the end of the page", repeat(floor, 4) + u"<div id=\"post_", 3, true},
         }) {
        std::vector<Text> floors;
        Text reason;
        bool success = !c.success;
        Cls4Discuz::split2Floors(c.html, floors, reason, success);
        EXPECT_EQ(floors.size(), c.floors) << c.fault;
        EXPECT_EQ(success, c.success) << c.fault;
    }
}

class PageContent : public testing::Test {
protected:
    PageContent() : smart_(makeSmart(files_)), discuz_(smart_, names_, random_) {}

    static rewrite::ClsSmart makeSmart(platform::MemoryFileSystem& files) {
        files.writeFile(u"/app/ADMarks.txt", platform::encode936(u"www.ADS.example\r\n"));
        return rewrite::ClsSmart(files, u"/app");
    }

    static Text floor(const Text& post) {
        return u"<div id=\"post_1234\"><td class=\"t_f\">" + post + u"</td></tr></table>";
    }

    platform::MemoryFileSystem files_;
    rewrite::ClsSmart smart_;
    UserNames names_;
    platform::SystemRandom random_;
    Cls4Discuz discuz_;
    Text reason_ = u"old";
    const Text closing_ = u"<div id=\"post_new\">";
};

TEST_F(PageContent, FirstPage) {
    const Text html = readPage("first_page.html");
    EXPECT_EQ(Cls4Discuz::extDiscuzTitle(html, reason_), u"CH-16机芯不开机急");
    // Blanks stand for removed tags; the line break straight before the end of the cell is split by one.
    EXPECT_EQ(discuz_.extDiscuzPageContent(html, reason_, ThreadPage::First),
              u"○维修案例:<br>长虹CH-16机芯不开机< br />电源正常  "
              u"<br><br>\r\n<br>∑维修经验: <br>①: 换行管试试，先断开负载< br />再测电压  "
              u"<br><br>\r\n②: 也可能是行输出变压器坏了  ");
    // What is judged stands in front, newest first; what is done about it behind, in order.
    EXPECT_EQ(reason_, u"纯字母|与上次重复|Include: www.ADS.example|空|无有效字符|old"
                       u"|楼层不合格,(楼层=2)|楼层不合格,(楼层=3)|楼层不合格,(楼层=4)|楼层不合格,(楼层=5)"
                       u"|楼层不合格,(楼层=6)");
}

TEST_F(PageContent, LaterPageHasRepliesOnly) {
    Text html, expected = u"<br><br>\r\n<br>∑维修经验: <br>①: 电源坏了零  ";
    for (const char16_t last : std::u16string_view(u"零一二三四五六七八九十")) {
        html += floor(u"电源坏了" + Text(1, last));
    }
    for (const char16_t* rest :
         {u"②: 电源坏了一", u"③: 电源坏了二", u"④: 电源坏了三", u"⑤: 电源坏了四", u"⑥: 电源坏了五", u"⑦: 电源坏了六",
          u"⑧: 电源坏了七", u"⑨: 电源坏了八", u"⑨: 电源坏了九", u"⑨: 电源坏了十"}) {
        expected += u"<br><br>\r\n" + Text(rest) + u"  ";
    }
    EXPECT_EQ(discuz_.extDiscuzPageContent(html + closing_, reason_, ThreadPage::Later), expected);
    EXPECT_EQ(reason_, u"old");
}

TEST_F(PageContent, ARejectedStarterDropsTheThread) {
    const Text html = floor(u"谢谢") + floor(u"电源坏了") + floor(u"换行管试试") + closing_;
    EXPECT_EQ(discuz_.extDiscuzPageContent(html, reason_, ThreadPage::First), u"");
    EXPECT_EQ(reason_, u"无有效字符|old|楼层<3，为: 2层|楼主不合格");

    reason_.clear();
    EXPECT_EQ(discuz_.extDiscuzPageContent(html, reason_, ThreadPage::Later),
              u"<br><br>\r\n<br>∑维修经验: <br>①: 电源坏了  <br><br>\r\n②: 换行管试试  ");
    EXPECT_EQ(reason_, u"与上次重复||楼层<3，为: 2层|楼层不合格,(楼层=0)") << "the starter was judged just before";
}

TEST_F(PageContent, APageWithoutFloorsIsRefused) {
    EXPECT_EQ(discuz_.extDiscuzPageContent(floor(u"电源坏了") + closing_, reason_, ThreadPage::First), u"");
    EXPECT_EQ(reason_, u"old|楼层<3，为: 0层|split2Floors失败!");
}

} // namespace
} // namespace kelb::extract
