#include "platform/code_page.h"
#include "platform/memory_file_system.h"
#include "platform/text.h"
#include "platform/utf8.h"
#include "store/ClsIO.h"

#include <gmock/gmock.h>

namespace kelb::store {
namespace {

using platform::toUtf8;
using testing::ElementsAre;
using testing::HasSubstr;

struct CountingPump final : platform::UiPump {
    void yield() override { ++yields; }
    int yields = 0;
};

class PageStore : public testing::Test {
protected:
    static constexpr std::u16string_view kBase = u"X:\\pages\\";

    void save(const std::u16string& path, std::string_view bytes = "page") {
        files.writeFile(std::u16string(kBase) + path, bytes);
    }
    /// Files "0001.htm" … in a sub-folder, each holding its name.
    void fill(const std::u16string& subFolder, int count) {
        for (int i = 1; i <= count; ++i) {
            const std::string digits = std::to_string(10000 + i).substr(1);
            save(subFolder + u"\\" + platform::fromUtf8(digits) + u".htm", digits);
        }
    }
    ClsIO walker(ClsIO::Keeping keeping = ClsIO::Keeping::EachCall) {
        return {files, platform::PageEncoding::Auto, {u"page", u"X:\\pages"}, pump, keeping};
    }
    static std::string next(ClsIO& walk) {
        std::u16string folder(kBase);
        return toUtf8(walk.nxtArticleV2(folder));
    }
    std::string counter() { return files.readFile(u"X:\\pages\\CounterResp.txt"); }

    platform::MemoryFileSystem files;
    CountingPump pump;
};

TEST_F(PageStore, HandsOutTheFilesOfASubFolderAndMovesOn) {
    save(u"0\\b.htm", platform::encode936(u"乙"));
    save(u"0\\A.htm", "\xE7\x94\xB2");
    save(u"0\\c|d.htm");
    save(u"0\\e.htm", "");
    save(u"2\\f.htm");
    ClsIO walk = walker();
    std::vector<std::u16string> unusable;
    walk.onUnusableName = [&](std::u16string_view path) { unusable.emplace_back(path); };

    std::u16string folder = u"X:\\pages";
    EXPECT_EQ(walk.nxtArticleV2(folder), u"甲") << "by name without regard to case; UTF-8";
    EXPECT_EQ(folder, kBase);
    EXPECT_EQ(counter(), "0,1\r\n");
    EXPECT_EQ(walk.page(), u"X:\\pages\\0\\A.htm");
    EXPECT_EQ(next(walk), "乙");
    EXPECT_EQ(next(walk), "") << "an empty page";
    EXPECT_EQ(counter(), "0,3\r\n");
    EXPECT_EQ(next(walk), "Err,X:\\pages\\0\\dsdsdsdfssddsdsdf is Not Exists.");
    EXPECT_EQ(walk.page(), u"");
    EXPECT_EQ(counter(), "1,0\r\n");
    EXPECT_EQ(next(walk), "FileLoopOver!") << "1 is missing, so 2 is never reached";
    EXPECT_EQ(counter(), "1,0\r\n");
    EXPECT_THAT(unusable, ElementsAre(u"X:\\pages\\0\\c|d.htm"));
    EXPECT_EQ(pump.yields, 4);
}

TEST_F(PageStore, BeginsAtZeroWithoutACounter) {
    ClsIO walk = walker();
    EXPECT_EQ(next(walk), "FileLoopOver!");
    EXPECT_EQ(counter(), "0,0\r\n");
}

TEST_F(PageStore, TakesAThousandFilesOfASubFolder) {
    struct Case {
        int files;
        int pages;
        std::size_t passedOver;
        const char* behind; ///< the text of the call after the last page
    };
    for (const Case& c : {Case{999, 999, 0, "Err,X:\\pages\\0\\dsdsdsdfssddsdsdf is Not Exists."},
                          Case{1000, 1000, 0, "FileLoopOver!"}, Case{1001, 1000, 1, "FileLoopOver!"}}) {
        files = platform::MemoryFileSystem();
        fill(u"0", c.files);
        ClsIO walk = walker();
        for (int i = 1; i <= c.pages; ++i) {
            ASSERT_EQ(next(walk), std::to_string(10000 + i).substr(1));
        }
        EXPECT_EQ(next(walk), c.behind) << c.files;
        EXPECT_EQ(counter(), "1,0\r\n") << c.files;
        EXPECT_EQ(walk.passedOver(), c.passedOver) << c.files;
    }
}

TEST_F(PageStore, ALaterWalkBeginsTheSubFolderAnewAndKeepsTheFileNumber) {
    fill(u"0", 3);
    fill(u"1", 1000);
    save(u"CounterResp.txt", "1,998\nanything");
    ClsIO walk = walker();
    EXPECT_EQ(next(walk), "0001");
    EXPECT_EQ(next(walk), "0002");
    EXPECT_EQ(next(walk), "FileLoopOver!") << "the file number has reached its end";
    EXPECT_EQ(walk.passedOver(), 998U);
}

TEST_F(PageStore, KeepsThePlaceWhenAsked) {
    fill(u"0", 1);
    fill(u"1", 2);
    ClsIO walk = walker(ClsIO::Keeping::OnRequest);
    next(walk);
    next(walk);
    EXPECT_EQ(next(walk), "0001") << "of sub-folder 1";
    EXPECT_EQ(counter(), "0,0\r\n");
    walk.keepPlace();
    EXPECT_EQ(counter(), "1,1\r\n");
    EXPECT_EQ(*walk.place(), (PagePlace{1, 1}));
    files.beforeOperation = [](std::string_view, std::u16string_view) { FAIL() << "nothing has moved"; };
    walk.keepPlace();
    files.beforeOperation = nullptr;
}

TEST_F(PageStore, APageThatCannotBeReadDoesNotHoldTheWalkUp) {
    fill(u"0", 2);
    ClsIO walk = walker();
    files.beforeOperation = [](std::string_view operation, std::u16string_view path) {
        if (operation == "read" && path.ends_with(u"0001.htm")) {
            throw platform::FileError(platform::FileError::Kind::AccessDenied, operation, path, 13, "denied");
        }
    };
    EXPECT_THROW(next(walk), platform::FileError);
    files.beforeOperation = nullptr;
    EXPECT_EQ(walk.page(), u"X:\\pages\\0\\0001.htm");
    EXPECT_EQ(next(walk), "0002");
}

TEST_F(PageStore, RefusesACounterThatHoldsNoPlace) {
    for (const char* line : {"", "0", "0,", ",0", "a,b", "0;0", "-1,0", "0,40000", "99999,0", "0,0x"}) {
        save(u"CounterResp.txt", line);
        ClsIO walk = walker();
        try {
            next(walk);
            ADD_FAILURE() << "\"" << line << "\" was taken";
        } catch (const CounterError& error) {
            EXPECT_THAT(error.what(), HasSubstr("X:\\pages\\CounterResp.txt"));
        }
        EXPECT_EQ(counter(), line) << "left for the user to look at";
    }
    save(u"CounterResp.txt", " 0 , 7 \r\n");
    EXPECT_EQ(readPlace(files, kBase), (PagePlace{0, 7}));
    fill(u"32767", 1);
    save(u"CounterResp.txt", "32767,999");
    ClsIO walk = walker();
    EXPECT_THROW(next(walk), std::overflow_error);
}

TEST_F(PageStore, TheOlderWalkGoesByTheFileNumber) {
    fill(u"0", 3);
    save(u"CounterResp.txt", "0,1");
    ClsIO walk = walker();
    EXPECT_EQ(walk.nxtArticle(), u"0002");
    EXPECT_EQ(walk.nxtArticle(), u"0003");
    EXPECT_EQ(walk.nxtArticle(), u"Err, filePath Not found.");
    EXPECT_EQ(walk.nxtArticle(), u"Err,X:\\pages\\1 Not found.");
    EXPECT_EQ(counter(), "1,0\r\n");
}

TEST_F(PageStore, StoresUnderTheNextFreeName) {
    std::u16string base = u"X:\\pages";
    save(u"0\\page1.htm");
    ClsIO store = walker();
    EXPECT_EQ(store.StoreIt(u"甲€ñ", base), u"X:\\pages\\0\\page0.htm");
    EXPECT_EQ(files.readFile(u"X:\\pages\\0\\page0.htm"), platform::encode936(u"甲€?"));
    EXPECT_EQ(store.StoreIt(u"", base), u"X:\\pages\\0\\page2.htm");

    fill(u"0", 997); // with those three, 1,000
    ClsIO second = walker();
    EXPECT_EQ(second.StoreIt(u"", base), u"X:\\pages\\0\\page3.htm") << "the 1,001st";
    EXPECT_EQ(second.StoreIt(u"", base), u"X:\\pages\\1\\page3.htm") << "the number goes on";
    fill(u"1", 1000);
    ClsIO third = walker();
    EXPECT_EQ(third.StoreIt(u"", base), u"X:\\pages\\2\\page0.htm");
}

} // namespace
} // namespace kelb::store
