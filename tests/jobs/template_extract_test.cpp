#include "jobs/template_extract.h"

#include "jobs/job_error.h"
#include "tests/jobs/job_fixture.h"

#include <gmock/gmock.h>

namespace kelb::jobs {
namespace {

using extract::FrmExtractor;
using testing::HasSubstr;
using testing::Not;

std::u16string number(int value) {
    return platform::fromUtf8(std::to_string(value));
}

/// The extractor's window, recorded.
class RecordingView final : public extract::ExtractorView {
public:
    std::vector<std::u16string> results, phases, boxes;
    std::vector<extract::TemplateRow> rows;
    std::u16string path, body;
    bool timer = false, interrupt = false, slowMode = false;
    std::size_t fragments = 0;
    std::size_t interruptAfter = static_cast<std::size_t>(-1); ///< rows

    void showModel(const extract::TemplateModel& model) override { fragments = model.fragments().size(); }
    void showHits(const extract::Alignment&) override {}
    void showPath(std::u16string_view text) override { path = text; }
    void showBody(std::u16string_view text) override { body = text; }
    void showResult(std::u16string_view text) override { results.emplace_back(text); }
    void showPhase(std::u16string_view text) override { phases.emplace_back(text); }
    void rowDone(extract::TemplateRow row, std::u16string_view) override {
        rows.push_back(row);
        interrupt = interrupt || rows.size() >= interruptAfter;
    }
    bool interrupted() override { return interrupt; }
    bool slow() override { return slowMode; }
    void switchTimer(bool on) override { timer = on; }
    void message(std::u16string_view, std::u16string_view text) override { boxes.emplace_back(text); }
    void yield() override {}
};

class TemplateExtractTest : public JobTest {
protected:
    TemplateExtractTest() {
        jet::Database::create(platform_, kOut)->commit();
        files.writeFile(u"X:\\home\\HTMLModel\\HTMLModel.htm", "<html><body><div>a</div><p>b</p></body></html>");
    }

    static constexpr std::u16string_view kOut = u"X:\\Comb2.mdb";

    /// Rows 1 to `count`, each with a page whose own lines are a heading and a body of `bodyLength` characters.
    void site(int count, std::size_t bodyLength = 150) {
        auto at = platformOf(files);
        ado::Environment environment(at, {});
        ado::Connection connection(environment);
        connection.Open(ado::jetConnectionString(kSource));
        for (int i = 1; i <= count; ++i) {
            connection.Execute(u"insert into bbsforum (url, content, cid) values ('http://s/" + number(i) +
                               u".htm','X:\\pages\\" + number(i) + u".htm',7)");
            savePage(i, bodyLength);
        }
        connection.Close();
    }
    void savePage(int i, std::size_t bodyLength) {
        std::u16string own = u"正文" + number(i) + u":";
        own.resize(bodyLength, u'文');
        files.writeFile(u"X:\\pages\\" + number(i) + u".htm",
                        platform::encode936(u"<html><head><title>标题" + number(i) + u"</title></head><body>" +
                                            u"<div>首页 | 维修</div><div>作者：" + number(i) + u"</div><h1>小标题" +
                                            number(i) + u"</h1><p>" + own + u"</p><div>版权所有</div></body></html>"));
    }

    void run(const TemplateExtractOptions& options = {std::u16string(kSource), std::u16string(kOut)}) {
        extractByTemplate(options, context(), host, summary);
    }

    /// The extractor with a view of the test's own, on the open workflow.
    FrmExtractor& extractor(const std::u16string& table = u"wxAll") {
        if (!extractor_) {
            context().templateWorkflow().open({std::u16string(kSource), std::u16string(kOut), table});
            extractor_.emplace(extractorParts(context()), view);
        }
        return *extractor_;
    }

    JobSummary summary{kTemplateExtractJob};
    RecordingView view;

private:
    platform::Platform platform_ = platformOf(files);
    std::optional<FrmExtractor> extractor_;
};

TEST_F(TemplateExtractTest, LearnsFrom106PagesAndSavesFromTheSecondRowOn) {
    site(300);
    run();
    EXPECT_EQ(summary.rows, 106U + 299U);
    EXPECT_EQ(summary.saved, 299U);
    EXPECT_EQ(host.entries[1], u"预处理! 0");
    EXPECT_EQ(host.entries[2 * 104 + 1], u"预处理! 104");
    EXPECT_EQ(host.entries[2 * 105], u"正常提取! 150 http://s/106.htm"); // starts again and tells no phase
    EXPECT_EQ(host.entries[2 * 105 + 1], u"正常提取! 150 http://s/2.htm");
    EXPECT_EQ(host.entries[2 * 105 + 2], u"正式处理! 106");
    EXPECT_EQ(host.boxes, (std::vector<std::u16string>{u"内容管理|执行完毕！", u"内容管理|执行完毕！"}));
    const std::vector<std::string> saved =
        rows(kOut, u"select url, sT, sC, cid, beginPos, beginStr, recTime from wxAll");
    ASSERT_EQ(saved.size(), 299U);
    EXPECT_THAT(saved.front(), testing::StartsWith("http://s/2.htm|标题2|正文2:文"));
    EXPECT_THAT(saved.front(), testing::EndsWith("文|7|0||2015-12-2 8:30:00"));
    for (const std::string& row : saved) {
        for (const char* everywhere : {"首页", "作者", "版权"}) {
            EXPECT_THAT(row, Not(HasSubstr(everywhere)));
        }
    }
}

TEST_F(TemplateExtractTest, TellsWhenThereAreTooFewPagesToLearnFrom) {
    site(105);
    run();
    EXPECT_EQ(summary.saved, 0U);
    EXPECT_THAT(summary.note, HasSubstr("fewer than 106"));
    EXPECT_EQ(rows(kOut, u"select url from wxAll").size(), 0U); // the table is made all the same
}

TEST_F(TemplateExtractTest, StopsBetweenRows) {
    site(3);
    host.stopAfter = 0;
    run();
    EXPECT_TRUE(summary.stopped);
    EXPECT_EQ(summary.rows, 0U);
}

TEST_F(TemplateExtractTest, RunsSlowlyToTheEnd) {
    site(110);
    run({.source = std::u16string(kSource), .dest = std::u16string(kOut), .slow = true});
    EXPECT_EQ(summary.saved, 109U);
    EXPECT_EQ(host.boxes, (std::vector<std::u16string>{u"内容管理|完成"}));
}

TEST_F(TemplateExtractTest, SlowModeTakesTheWarmUpInOneTickAndThenAnArticleATick) {
    site(108, 101);
    savePage(3, 100);
    savePage(4, 99);
    view.slowMode = true;
    extractor().readModel(u"X:\\home\\HTMLModel\\HTMLModel.htm");
    extractor().Command1_Click();
    EXPECT_TRUE(view.timer);
    EXPECT_EQ(view.rows.size(), 0U);
    extractor().Timer1_Timer();
    EXPECT_EQ(view.rows.size(), 107U); // 105 to learn from, the short one, and the one that starts again
    extractor().Timer1_Timer();
    EXPECT_EQ(view.results.back(), u"正常提取! 101 http://s/2.htm");
    extractor().Timer1_Timer(); // 100 characters are saved but end no tick, nor do 99
    EXPECT_EQ(view.rows.size(), 111U);
    EXPECT_EQ(view.results.back(), u"正常提取! 101 http://s/5.htm");
    EXPECT_EQ(view.results[view.results.size() - 2], u"内容过少! 99 http://s/4.htm");
    view.interrupt = true;
    extractor().Timer1_Timer();
    EXPECT_FALSE(view.timer);
    EXPECT_EQ(view.boxes.back(), u"完成");
    EXPECT_EQ(view.rows.size(), 111U);
}

TEST_F(TemplateExtractTest, SavesBodiesBelow8000CharactersAndTitlesBelow201) {
    site(108);
    savePage(2, 7999);
    savePage(3, 8000);
    files.writeFile(u"X:\\pages\\4.htm",
                    platform::encode936(u"<title>a<br>" + std::u16string(250, u'题') + u"</title><body><p>4</p><p>" +
                                        std::u16string(120, u'文') + u"</p></body>"));
    extractor().Command1_Click();
    extractor().Command1_Click();
    const auto phase = std::ranges::find(view.phases, u"内容过长! 107");
    ASSERT_NE(phase, view.phases.end());
    EXPECT_EQ(*(phase - 1), u"正式处理! 107");
    context().templateWorkflow().close();
    EXPECT_EQ(rows(kOut, u"select url from wxAll where url='http://s/2.htm'").size(), 1U);
    EXPECT_EQ(rows(kOut, u"select url from wxAll where url='http://s/3.htm'").size(), 0U);
    std::u16string title = u"a";
    title.resize(200, u'题');
    EXPECT_EQ(rows(kOut, u"select sT from wxAll where url='http://s/4.htm'"),
              std::vector<std::string>{platform::toUtf8(title)});
}

TEST_F(TemplateExtractTest, StepsThroughRows) {
    site(3);
    execute(kSource, {u"insert into bbsforum (url, content) values ('http://s/none','X:\\pages\\none.htm')",
                      u"insert into bbsforum (url, content) values ('http://s/null',NULL)",
                      u"insert into bbsforum (url, content) values ('http://s/html','<body>\r\n<p>page itself</p>')",
                      u"insert into bbsforum (url, content) values ('http://s/bodiless','X:\\pages\\b.htm')"});
    files.writeFile(u"X:\\pages\\b.htm", std::string(500, 'x'));
    FrmExtractor& form = extractor();
    const auto next = [&] {
        form.CmdNxt_Click();
        return view.results.back();
    };
    form.Command5_Click(); // at the first row already
    EXPECT_THAT(platform::toUtf8(next()), HasSubstr("http://s/1.htm"));
    EXPECT_EQ(view.path, u"X:\\pages\\1.htm");
    form.Command5_Click();
    EXPECT_THAT(platform::toUtf8(next()), HasSubstr("http://s/1.htm")); // one row back at most
    EXPECT_THAT(platform::toUtf8(next()), HasSubstr("http://s/2.htm"));
    EXPECT_THAT(platform::toUtf8(next()), HasSubstr("http://s/3.htm"));
    form.Command5_Click();
    EXPECT_THAT(platform::toUtf8(next()), HasSubstr("http://s/2.htm"));
    next();
    EXPECT_EQ(next(), u"内容过少! 0 http://s/none");
    EXPECT_EQ(next(), u"内容过少! 0 http://s/null");
    EXPECT_EQ(next(), u"内容过少! 0 http://s/html");
    EXPECT_EQ(next(), u"内容过少! 0 http://s/bodiless");
    EXPECT_EQ(view.rows.back(), extract::TemplateRow::NoPageFile);
    const std::size_t done = view.rows.size();
    next();
    EXPECT_EQ(view.rows.size(), done); // nothing at the end
    form.Command5_Click();
    EXPECT_EQ(next(), u"内容过少! 0 http://s/html");
}

/// An error leaves no half row, and the window goes on with the same row.
TEST_F(TemplateExtractTest, DropsARowThatCannotBeSaved) {
    site(108);
    execute(kOut, {u"create table small (url varchar(14), cid int, sT varchar(255), sC memo, beginPos int, "
                   u"beginStr varchar(255), recTime datetime)"});
    FrmExtractor& form = extractor(u"small");
    form.Command1_Click();                           // to row 3
    EXPECT_THROW(form.Command1_Click(), ado::Error); // "http://s/10.htm" is the first of 15 characters
    EXPECT_THROW(form.CmdNxt_Click(), ado::Error);
    context().templateWorkflow().close();
    EXPECT_EQ(rows(kOut, u"select url from small").size(), 8U); // rows 2 to 9
}

TEST_F(TemplateExtractTest, RefusesWhatCannotWorkBeforeItReadsAPage) {
    execute(u"X:\\bare.mdb",
            {u"create table bbsforum (id int, url varchar(255))",
             u"create table wxAll (url varchar(255), cid int, sT varchar(255), sC memo, recTime datetime)"});
    const std::u16string source(kSource), out(kOut), bare = u"X:\\bare.mdb";
    struct Case {
        TemplateExtractOptions options;
        const char* told;
    };
    const Case cases[] = {
        {{.source = bare, .dest = out}, "content"},
        {{.source = source, .dest = bare}, "beginPos"},
        {{.source = u"X:\\none.mdb", .dest = out}, "找不到源数据库"},
        {{.source = source}, "找不到目的数据库: \\Comb2.mdb"},
        {{.source = source, .dest = out, .model = u"X:\\none.htm"}, "none.htm"},
    };
    for (const Case& each : cases) {
        try {
            run(each.options);
            ADD_FAILURE() << each.told;
        } catch (const std::exception& error) {
            EXPECT_THAT(error.what(), HasSubstr(each.told));
        }
    }
    files.writeFile(u"X:\\empty.htm", "");
    EXPECT_THROW(run({.source = source, .dest = out, .model = u"X:\\empty.htm"}), JobError);
    EXPECT_EQ(host.boxes, std::vector<std::u16string>{u"内容管理|模版为空"});
    // The provider's prefix twice opens the same file, and the path stays bare.
    context().templateWorkflow().open({source, ado::jetConnectionString(out), u"other"});
    EXPECT_EQ(context().templateWorkflow().sDestDbPath(), out);
    context().templateWorkflow().close();
    EXPECT_EQ(rows(kOut, u"select sC9 from other").size(), 0U);
}

TEST_F(TemplateExtractTest, ProposesQueriesOnlyOfSitesThatAreSet) {
    const TemplateProposals bare = templateProposals(configuration({}));
    EXPECT_EQ(bare.sources, (std::vector<std::u16string>{u"\\Comb.mdb", u"G:\\KelbFolder4WX\\Comb.mdb"}));
    EXPECT_EQ(bare.queries, std::vector<std::u16string>{u"select * from bbsforum ORDER BY url"});
    const TemplateProposals both = templateProposals(configuration(
        {{u"Setup.adultFolder", u"D:\\d"}, {u"Setup.siteAPrefix", u"http://a"}, {u"Setup.siteBPrefix", u"http://b"}}));
    EXPECT_EQ(both.destination, u"D:\\d\\Comb2.mdb");
    EXPECT_EQ(both.queries[1], u"select * from bbsforum where url like 'http://a%' ORDER BY url");
    EXPECT_EQ(both.queries[2], u"select top 200 * from bbsforum where url like 'http://b%' ORDER BY url");
    EXPECT_EQ(both.queries[3], u"select * from bbsforum where url like 'http://b/html/%-%.htm' ORDER BY url");
}

} // namespace
} // namespace kelb::jobs
