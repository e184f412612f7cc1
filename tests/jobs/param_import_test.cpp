#include "jobs/param_import.h"

#include "store/page_counter.h"
#include "tests/jobs/product_fixture.h"

#include <gmock/gmock.h>

namespace kelb::jobs {
namespace {

using platform::toUtf8;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Texts = std::vector<std::u16string>;

constexpr std::u16string_view kSaved = u"提取到参数，已保存。";
constexpr std::u16string_view kNotWanted = u"提取到参数，但没有保存(保存选项未选择)。";
constexpr std::u16string_view kThere = u"提取到参数，但没有保存(该参数已存在)。";

class ParamImport : public ProductTest {
protected:
    ParamImport() { createKnowledge(kDest); }

    /// Runs over the folder unless `change` says otherwise.
    JobSummary import(const std::function<void(ParamImportOptions&)>& change = {}, const Settings& settings = {}) {
        ParamImportOptions options;
        options.folder = kFolder;
        options.sink.connection = kDest;
        options.saves = [] { return true; };
        if (change) {
            change(options);
        }
        JobSummary summary(kParamImportJob);
        importParameters(options, context(settings), host, summary);
        return summary;
    }
    static void byRows(ParamImportOptions& options) {
        options.mode = LoopMode::Database;
        options.folder.clear();
        options.source = kSource;
    }
    std::vector<std::string> stored(std::u16string_view fields = u"TVName") {
        return rows(kDest, u"select " + std::u16string(fields) + u" from wxKnowledge");
    }
    static std::u16string outcome(std::u16string_view message, const std::u16string& name, const std::u16string& code) {
        return std::u16string(message) + u" sTVName: " + name + u", sTVCode1: " + code;
    }
    void crawlProduct(const std::u16string& name, const std::u16string& url) {
        execute(kSource, {u"insert into bbsforum (url, content) values ('" + url + u"', 'D:\\crawl\\" + name + u"')"});
    }
};

const Settings kPortal = {{u"Params.portalPath", u"http://p.example"}};

TEST_F(ParamImport, StoresNameCodeAndTenParameters) {
    save(u"0\\a.htm", product(u"长虹液晶（ITV42830DE）参数_报价", {{u"产品定位", u"全高清电视"},
                                                                   {u"屏幕尺寸", u"42 英寸\r\n    (实测)"},
                                                                   {u"分辨率", u"1920x1080"},
                                                                   {u"音频性能", u"2x8W"}}));
    const JobSummary summary = import();
    EXPECT_THAT(stored(u"*"), ElementsAre("http://none|ITV42830DE|长虹液晶|全高清电视|42 英寸\r\n(实测)||||1920x1080||"
                                          "||2x8W"));
    EXPECT_EQ(host.entries.back(), u"totalRec: 0");
    EXPECT_THAT(host.progress, ElementsAre(u"已识别: 2015-12-2 8:30:00"));
    EXPECT_THAT(host.outcomes, ElementsAre(outcome(kSaved, u"长虹液晶", u"ITV42830DE"), u"无法识别! 2015-12-2 8:30:00"))
        << "the second is the end of the sub-folder";
    EXPECT_THAT(host.boxes, ElementsAre(u"网页内容提取|完成了参数的提取"));
    EXPECT_EQ(summary.rows, 2U);
    EXPECT_EQ(summary.saved, 1U);
    EXPECT_EQ(files.readFile(u"X:\\shop\\CounterResp.txt"), "1,0\r\n");
}

TEST_F(ParamImport, ANameIsStoredOnceAndOnlyWhenSavingIsOn) {
    for (const char16_t* file : {u"0\\1.htm", u"0\\2.htm", u"0\\3.htm", u"0\\4.htm"}) {
        save(file, product(u"海信（TLM42）参数_", {}));
    }
    save(u"0\\5.htm", product(u"_%", {}));
    save(u"0\\6.htm", product(u"HAIER(LU42)", {}));
    execute(kDest, {u"insert into wxKnowledge (TVName) values ('haier')"});
    std::size_t asked = 0;
    const auto saves = [&asked] { return ++asked != 1 && asked != 4; };
    import([&saves](ParamImportOptions& options) { options.saves = saves;
});
EXPECT_THAT(host.outcomes,
            ElementsAre(outcome(kNotWanted, u"海信", u"TLM42"), outcome(kSaved, u"海信", u"TLM42"),
                        outcome(kThere, u"海信", u"TLM42"), outcome(kThere, u"海信", u"TLM42"),
                        outcome(kThere, u"_%", u""), outcome(kThere, u"HAIER", u""), u"无法识别! 2015-12-2 8:30:00"))
    << "the box is read for each page; when both apply, the name's message wins; a name is a pattern";
EXPECT_THAT(stored(), ElementsAre("haier", "海信"));
} // namespace

TEST_F(ParamImport, ATableNeeds201Characters) {
    const std::u16string start = u"<title>甲(A1)</title><table><th>主体参数</th>";
    const std::size_t length = start.size() - start.find(u"<table>");
    save(u"0\\1.htm", start + std::u16string(200 - length, u'x'));
    save(u"0\\2.htm", start + std::u16string(201 - length, u'x'));
    save(u"0\\3.htm", u"<title>甲</title>" + std::u16string(300, u'x'));
    const JobSummary summary = import();
    EXPECT_THAT(stored(u"TVName, param1, param10"), ElementsAre("甲||")) << "what is not found is an empty text";
    EXPECT_EQ(summary.skipped, 3U);
    EXPECT_THAT(summary.because(RowFate::Skipped),
                ElementsAre(std::pair("noParameterTable", 2U), std::pair("endOfFolder", 1U)));
}

TEST_F(ParamImport, AWalkGoesOnWhereItWasStopped) {
    for (const char16_t* file : {u"0\\1.htm", u"1\\2.htm", u"1\\3.htm", u"2\\4.htm"}) {
        save(file, product(u"型号" + std::u16string(file), {}));
    }
    // Passes: 1, end of 0, 2, 3 …
    class Stopping final : public RecordingHost {
    public:
        bool stopRequested() override { return asked_++ == 3; }

    private:
        int asked_ = 0;
    } stopping;
    JobSummary summary(kParamImportJob);
    ParamImportOptions options;
    options.folder = kFolder;
    options.sink.connection = kDest;
    options.saves = [] { return true; };
    importParameters(options, context(), stopping, summary);
    EXPECT_TRUE(summary.stopped);
    EXPECT_THAT(stopping.boxes, ElementsAre(u"网页内容提取|完成了参数的提取"));
    EXPECT_THAT(toUtf8(stopping.entries.back()), HasSubstr("sub-folder 1 behind 1 files"));
    EXPECT_EQ(stored().size(), 2U);
    EXPECT_EQ(*store::readPlace(files, u"X:\\shop\\"), (store::PagePlace{1, 1}));

    const JobSummary second = import();
    EXPECT_THAT(toUtf8(host.entries.at(2)), HasSubstr("goes on in sub-folder 1, from its first file on; 1 of"));
    EXPECT_EQ(second.saved, 2U) << "3 and 4; 2 is there";
    EXPECT_EQ(second.counts, (std::vector<std::pair<std::string, std::size_t>>{{"unreadFiles", 0}}));

    const JobSummary third = import();
    EXPECT_EQ(third.rows, 0U);
    EXPECT_THAT(third.note, HasSubstr("kelb counter reset"));
}

TEST_F(ParamImport, TellsWhatItHasNotReached) {
    for (int i = 0; i < 1003; ++i) {
        save(u"0\\" + platform::number(i) + u".htm", u"x");
    }
    save(u"2\\1.htm", u"x");
    save(u"2\\2.htm", u"x");
    save(u"other\\1.htm", u"x");
    const JobSummary summary = import();
    EXPECT_EQ(summary.rows, 1000U);
    EXPECT_EQ(summary.counts, (std::vector<std::pair<std::string, std::size_t>>{{"unreadFiles", 5}}));
}

TEST_F(ParamImport, ItsProgressCountsTheFilesThatAreHandedOut) {
    class Progress final : public RecordingHost {
    public:
        std::vector<std::pair<std::size_t, std::size_t>> done;
        void showOutcome(std::u16string_view, std::size_t number, std::size_t total) override {
            done.emplace_back(number, total);
        }
    } progress;
    save(u"0\\1.htm", u"x");
    save(u"0\\a|b.htm", u"x");
    save(u"1\\2.htm", u"x");
    JobSummary summary(kParamImportJob);
    ParamImportOptions options;
    options.folder = kFolder;
    options.sink.connection = kDest;
    importParameters(options, context(), progress, summary);
    using Done = std::pair<std::size_t, std::size_t>;
    EXPECT_THAT(progress.done, ElementsAre(Done(1, 4), Done(2, 4), Done(3, 4), Done(4, 4)))
        << "a file and the end of its sub-folder, twice";
}

TEST_F(ParamImport, GoesByTheRowsOfACrawlTable) {
    saveFile(u"a", product(u"甲(AB123)型", {}));
    saveFile(u"c", product(u"丙(AB125)型", {}));
    crawlProduct(u"a.htm", u"http://p.example/product/1/param.shtml");
    crawlProduct(u"none.htm", u"http://p.example/product/2/param.shtml?x");
    crawlProduct(u"c.htm", u"http://p.example/product/3/param.shtml");
    crawlProduct(u"a.htm", u"http://p.example/product/param.shtml");
    crawlProduct(u"a.htm", u"http://q.example/product/1/param.shtml");
    JobSummary summary = import(byRows, kPortal);
    EXPECT_EQ(host.entries, Texts{u"totalRec: 3"});
    EXPECT_THAT(stored(u"url, TVName"),
                ElementsAre("http://p.example/product/1/param.shtml|甲", "http://p.example/product/3/param.shtml|丙"));
    EXPECT_EQ(summary.rows, 3U);
    EXPECT_THAT(summary.because(RowFate::Skipped), ElementsAre(std::pair("emptyPage", 1U)));

    host.location.lanMode = false;
    summary = import(byRows, kPortal);
    EXPECT_EQ(summary.skipped, 3U);
    EXPECT_THAT(summary.note, HasSubstr("LAN mode is off"));
}

TEST_F(ParamImport, MakesSeventyThousandPasses) {
    execute(kSource, {u"create table many (url varchar(255), content varchar(20))"});
    {
        auto at = platformOf(files);
        ado::Environment environment(at, {});
        ado::Connection connection(environment);
        connection.Open(ado::jetConnectionString(kSource));
        ado::Recordset many;
        many.Open(u"many", connection, ado::CursorType::Keyset, ado::LockType::Optimistic);
        for (int i = 0; i < 70001; ++i) {
            many.AddNew();
            many.set(u"url", u"http://p.example/product/1/param.shtml");
            many.Update();
        }
    }
    host.location.lanMode = false;
    const JobSummary summary = import(
        [](ParamImportOptions& options) {
            byRows(options);
            options.sourceTable = u"many";
        },
        kPortal);
    EXPECT_EQ(summary.rows, 70000U);
}

TEST_F(ParamImport, CountsTheCrawlDatabaseOfAFolder) {
    execute(u"X:\\shop\\Comb.mdb", {u"create table bbsforum (url varchar(255), content memo)",
                                    u"insert into bbsforum (url) values ('http://x/product/1/param.shtml')",
                                    u"insert into bbsforum (url) values ('http://x/product/1/other.shtml')"});
    import();
    EXPECT_EQ(host.entries, Texts{u"totalRec: 1"});
}

TEST_F(ParamImport, EndsWithOneClearError) {
    const auto error = [&](const std::function<void(ParamImportOptions&)>& change, const Settings& settings = {}) {
        try {
            JobSummary summary(kParamImportJob);
            ParamImportOptions options;
            options.folder = kFolder;
            options.sink.connection = kDest;
            options.saves = [] { return true; };
            change(options);
            Context fresh(platformOf(files), configuration(settings), ado::Environment::Options{});
            importParameters(options, fresh, host, summary);
        } catch (const std::exception& failure) {
            return std::string(failure.what());
        }
        return std::string("none");
    };
    const auto same = [](ParamImportOptions&) {};
    files.makeFolders(kFolder);
    EXPECT_THAT(error([](ParamImportOptions& o) { o.folder.clear(); }), HasSubstr("[Params] shareFolder"));
    EXPECT_THAT(error(byRows), HasSubstr("[Params] portalPath"));
    EXPECT_THAT(error([](ParamImportOptions& o) { o.sink.connection.clear(); }), HasSubstr("[SqlServer] server"));
    EXPECT_THAT(error([](ParamImportOptions& o) { o.folder = u"X:\\nowhere"; }),
                HasSubstr("cannot walk over the folder \"X:\\nowhere\""));
    EXPECT_THAT(error([](ParamImportOptions& o) { o.sink.connection = kSource; }), HasSubstr("wxKnowledge"));

    save(u"0\\1.htm", product(u"L'Air(A1)", {}));
    EXPECT_THAT(error(same), HasSubstr("(Page: X:\\shop\\0\\1.htm)")) << "an apostrophe goes into the look-up as it is";
    save(u"0\\1.htm", product(u"甲", {{u"产品定位", std::u16string(256, u'x')}}));
    EXPECT_THAT(error(same), testing::AllOf(HasSubstr("param1"), HasSubstr("255"), HasSubstr("0\\1.htm")));
    EXPECT_THAT(stored(), IsEmpty());
    EXPECT_EQ(*store::readPlace(files, u"X:\\shop\\"), (store::PagePlace{0, 0})) << "nothing was passed over";

    files.removeFile(u"X:\\home\\ADMarks.txt");
    save(u"0\\1.htm", product(u"甲", {}));
    EXPECT_THAT(error(same), HasSubstr("ADMarks.txt"));
    files.writeFile(u"X:\\shop\\CounterResp.txt", "?");
    EXPECT_THAT(error(same), HasSubstr("CounterResp.txt"));
}

/// A walk that is cut off after any of its file operations goes on in a second run, and no page is lost.
TEST_F(ParamImport, AKillLosesNoPage) {
    class TickingClock final : public platform::Clock {
    public:
        platform::DateTime now() const override { return {2015, 12, 2, 8, 30, 0}; }
        double steadySeconds() const override { return seconds_ += 0.3; }

    private:
        mutable double seconds_ = 0;
    } ticking;
    struct Killed : std::exception {};
    std::size_t cuts = 0;
    for (std::size_t nth = 0;; nth += 3) {
        files = platform::MemoryFileSystem();
        files.writeFile(u"X:\\home\\ADMarks.txt", "x");
        createKnowledge(kDest);
        for (const char16_t* file : {u"0\\1.htm", u"1\\2.htm", u"1\\3.htm", u"2\\4.htm", u"3\\5.htm"}) {
            save(file, product(u"型号" + std::u16string(file), {}));
        }
        ParamImportOptions options;
        options.folder = kFolder;
        options.sink.connection = kDest;
        options.saves = [] { return true; };
        JobSummary summary(kParamImportJob);
        std::size_t left = nth;
        bool dead = false;
        files.beforeOperation = [&](std::string_view, std::u16string_view) {
            dead = dead || left-- == 0;
            if (dead) {
                throw Killed();
            }
        };
        {
            Context run({files, ticking, random, u"X:\\home"}, Configuration(), ado::Environment::Options{});
            try {
                importParameters(options, run, host, summary);
            } catch (const Killed&) {
                ++cuts;
            }
        }
        files.beforeOperation = nullptr;
        Context rest(platformOf(files), Configuration(), ado::Environment::Options{});
        importParameters(options, rest, host, summary);
        ASSERT_EQ(stored().size(), 5U) << "cut at operation " << nth;
        if (!dead) {
            break;
        }
    }
    EXPECT_GT(cuts, 10U);
}

} // namespace kelb::jobs
} // namespace kelb::jobs
