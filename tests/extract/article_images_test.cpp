#include "extract/Cls4Article.h"

#include "ado/connection_string.h"
#include "ado/recordset.h"
#include "jet/database.h"
#include "platform/clock.h"
#include "platform/code_page.h"
#include "platform/memory_file_system.h"
#include "platform/random.h"
#include "platform/utf8.h"

#include <gtest/gtest.h>

namespace kelb::extract {
namespace {

using platform::toUtf8;

struct SourceCase {
    const char* name;
    std::u16string tag, address;
};

class GetImgSrc : public testing::TestWithParam<SourceCase> {};

TEST_P(GetImgSrc, ReadsTheAddressOfATag) {
    EXPECT_EQ(toUtf8(Cls4Article::getImgSrc(GetParam().tag, u"http://h.cn/x/y.htm")), toUtf8(GetParam().address));
}

std::u16string longTag(std::size_t addressLength) {
    const std::u16string front = u"http://h.cn/";
    return u"<img src=\"" + front + std::u16string(addressLength - front.size(), u'a') + u"\">";
}

INSTANTIATE_TEST_SUITE_P(Tags, GetImgSrc,
                         testing::ValuesIn<SourceCase>({
                             {"double_quotes", u"<img src=\"a b.jpg\" alt=\"c\">", u"http://h.cn/x/a b.jpg"},
                             {"single_quotes", u"<IMG SRC='a\".jpg'>", u"http://h.cn/x/a\".jpg"},
                             {"bare_to_the_blank", u"<img src=/a.jpg width=1>", u"http://h.cn/a.jpg"},
                             {"bare_to_the_end", u"<img border=0 src=a.jpg>", u"http://h.cn/x/a.jpg"},
                             {"bare_to_a_blank_behind_the_end", u"<img src=a.jpg>b c", u"http://h.cn/x/a.jpg>b"},
                             {"bare_to_the_end_past_a_tab", u"<img src=a\t.jpg>", u"http://h.cn/x/a\t.jpg"},
                             {"first_of_two", u"<img data-src=\"a.gif\" src=\"b.gif\">", u"http://h.cn/x/a.gif"},
                             {"absolute", u"<img src=\"http://o.cn/a.jpg\">", u"http://o.cn/a.jpg"},
                             {"absolute_in_upper_case", u"<img src=\"HTTP://o.cn/a.jpg\">", u""},
                             {"secure_counts_as_relative", u"<img src=\"https://o.cn/a.jpg\">",
                              u"http://h.cn/x/https://o.cn/a.jpg"},
                             {"empty_value_is_the_folder", u"<img src=\"\" border=0>", u"http://h.cn/x/"},
                             {"of_14", u"<img src=a.gf>", u""},
                             {"of_15", u"<img src=a.gif>", u"http://h.cn/x/a.gif"},
                             {"no_source", u"<img alt=\"a.jpg\">", u""},
                             {"blank_before_the_sign", u"<img src =\"a.jpg\">", u""},
                             {"quote_not_closed", u"<img src=\"a.jpg>", u""},
                             {"nothing_behind", u"<img alt=1 src=", u""},
                             {"script", u"<img src=\"JavaScript:f()\">", u""},
                             {"line_break", u"<img src=\"a\r\nb.jpg\">", u""},
                             {"line_feed_alone", u"<img src=\"a\nb.jpg\">", u"http://h.cn/x/a\nb.jpg"},
                             {"of_10_in_all", u"<img src=\"http://a.b\">", u""},
                             {"of_11_in_all", u"<img src=\"http://a.bc\">", u"http://a.bc"},
                             {"of_1024", longTag(1024), u"http://h.cn/" + std::u16string(1012, u'a')},
                             {"of_1025", longTag(1025), u""},
                             {"other_scheme", u"<img src=\"data://o.cn/a\">", u""},
                         }),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(GetTagIMG, IsTheFirstTagWithItsEnd) {
    EXPECT_EQ(Cls4Article::getTagIMG(u"a>b<p><ImG src=1>c<img>"), u"<ImG src=1>");
    EXPECT_EQ(Cls4Article::getTagIMG(u"<im<img"), u"");
    EXPECT_EQ(Cls4Article::getTagIMG(u"<imgs x>"), u"<imgs x>");
    EXPECT_EQ(Cls4Article::getTagIMG(u""), u"");
}

TEST(ImgSrcRecover, TurnsTheWordsIntoBrackets) {
    EXPECT_EQ(Cls4Article::ImgSrcRecover(u"甲左尖quorra括号img src=D:\\a.jpg右尖quorra括号乙左尖括号"),
              u"甲<img src=D:\\a.jpg>乙左尖括号");
}

class ImgSrcChanger : public testing::Test, protected platform::UiPump {
protected:
    ImgSrcChanger() {
        jet::Database::create(platform_, u"D:\\pics.mdb")->commit();
        connection_.Open(ado::jetConnectionString(u"D:\\pics.mdb"));
        connection_.Execute(u"create table URLsPIC (id int identity(1,1) NOT NULL, url varchar(255), "
                            u"filepath varchar(255))");
        files_.makeFolders(u"D:\\home\\TestRec");
    }
    void yield() override { ++yields_; }

    void store(const std::u16string& url, const char16_t* path) {
        const std::u16string value = path == nullptr ? u"null" : u"'" + std::u16string(path) + u"'";
        connection_.Execute(u"insert into URLsPIC (url, filepath) values ('" + url + u"', " + value + u")");
    }
    std::u16string change(std::u16string html) {
        const std::u16string given =
            Cls4Article::ImgSrcChanger(html, u"http://h.cn/x/y.htm", {connection_, platform_, *this});
        EXPECT_EQ(given, html) << "the argument is changed as well";
        return html;
    }
    std::u16string log() { return platform::decode936(files_.readFile(kLog)); }

    static constexpr std::u16string_view kLog = u"D:\\home\\TestRec\\ImgSrcChanger没有查询到的图片.txt";
    platform::MemoryFileSystem files_;
    platform::SystemClock clock_;
    platform::SystemRandom random_;
    platform::Platform platform_{files_, clock_, random_, u"D:\\home"};
    ado::Environment environment_{platform_, {}};
    ado::Connection connection_{environment_};
    int yields_ = 0;
};

TEST_F(ImgSrcChanger, PutsStoredCopiesAndNotesInPlaceOfTags) {
    files_.writeFile(u"D:\\KelbFolder\\pic\\1.jpg", "one");
    files_.writeFile(u"D:\\other\\2.jpg", "two");
    store(u"http://h.cn/x/1.jpg", u"D:\\KelbFolder\\pic\\1.jpg");
    store(u"http://h.cn/x/o''2.jpg", u"D:\\other\\2.jpg"); // the statement stores one apostrophe
    store(u"http://h.cn/x/3.jpg", u"D:\\KelbFolder\\pic\\gone.jpg");
    store(u"http://h.cn/x/4.jpg", nullptr);
    EXPECT_EQ(toUtf8(change(u"甲<img src=\"1.jpg\">乙<IMG src=\"5.jpg\">丙<img src=\"1.jpg\">"
                            u"<img src=\"o'2.jpg\"><img src=\"3.jpg\"><img src='4.jpg'><img>")),
              toUtf8(u"甲左尖quorra括号img src=D:\\wwwroot\\imgs\\wxQiChe\\pic\\1.jpg右尖quorra括号乙<br>无图片51<br>丙"
                     u"左尖quorra括号img src=D:\\wwwroot\\imgs\\wxQiChe\\pic\\1.jpg右尖quorra括号"
                     u"左尖quorra括号img src=D:\\other\\2.jpg右尖quorra括号"
                     u"<br>无图片52<br><br>无图片52<br><br>无图片51<br>"));
    EXPECT_EQ(files_.readFile(u"D:\\wwwroot\\imgs\\wxQiChe\\pic\\1.jpg"), "one");
    EXPECT_EQ(files_.readFile(u"D:\\other\\2.jpg"), "two");
    EXPECT_EQ(toUtf8(log()), toUtf8(u"<img src=\"http://h.cn/x/5.jpg\">xxxxxxxxxxxxxxxxxx\r\n"
                                    u"<img src=\"http://h.cn/x/3.jpg\">yyyyyyyyyyyyyyyy\r\n"
                                    u"<img src=\"http://h.cn/x/4.jpg\">yyyyyyyyyyyyyyyy\r\n"
                                    u"<img src=\"\">xxxxxxxxxxxxxxxxxx\r\n"));
    EXPECT_EQ(yields_, 6) << "once for each tag, not for each place where it stands";
}

TEST_F(ImgSrcChanger, AddsToItsLogAndOverwritesCopies) {
    files_.writeFile(kLog, platform::encode936(u"前\r\n"));
    files_.writeFile(u"D:\\wwwroot\\imgs\\wxQiChe\\1.jpg", "old");
    files_.writeFile(u"D:\\KelbFolder\\1.jpg", "new");
    store(u"http://h.cn/x/1.jpg", u"D:\\KelbFolder\\1.jpg");
    change(u"<img src=\"1.jpg\"><img src=\"2.jpg\">");
    EXPECT_EQ(files_.readFile(u"D:\\wwwroot\\imgs\\wxQiChe\\1.jpg"), "new");
    EXPECT_EQ(toUtf8(log()), toUtf8(u"前\r\n<img src=\"http://h.cn/x/2.jpg\">xxxxxxxxxxxxxxxxxx\r\n"));
}

TEST_F(ImgSrcChanger, LeavesAPageWithoutImagesAlone) {
    EXPECT_EQ(change(u"甲<p>乙<img"), u"甲<p>乙<img");
    EXPECT_FALSE(files_.fileExists(kLog));
}

TEST_F(ImgSrcChanger, LeavesThePageAsItWasAfterAnError) {
    files_.writeFile(u"D:\\KelbFolder\\1.jpg", "one");
    store(u"http://h.cn/x/1.jpg", u"D:\\KelbFolder\\1.jpg");
    files_.beforeOperation = [](std::string_view operation, std::u16string_view path) {
        if (operation == "write") {
            throw platform::FileError(platform::FileError::Kind::NoSpace, "write", path, 28, "no space");
        }
    };
    std::u16string html = u"<img src=\"1.jpg\">";
    EXPECT_THROW(Cls4Article::ImgSrcChanger(html, u"http://h.cn/x/y.htm", {connection_, platform_, *this}),
                 platform::FileError);
    EXPECT_EQ(html, u"<img src=\"1.jpg\">");
    files_.beforeOperation = nullptr;
}

} // namespace
} // namespace kelb::extract
