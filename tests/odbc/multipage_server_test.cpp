#include "jobs/multipage_import.h"

#include "ado/error.h"
#include "tests/jobs/article_fixture.h"
#include "tests/odbc/server_jobs.h"

#include <gmock/gmock.h>

namespace kelb::jobs {
namespace {

using ado::testing::PostgresServer;
using platform::toUtf8;
using testing::ElementsAre;
using testing::HasSubstr;

/// Pages in an Access file, articles on a server.
class MultipageServer : public ServerJob<ArticleTest> {
protected:
    MultipageServer() {
        execute(kSource, {u"alter table bbsforum add pagenum short", u"alter table bbsforum add blnPass yesno"});
        onServer([](ado::Connection& server) {
            server.Execute(u"drop table if exists wxPrinter");
            server.Execute(u"create table wxPrinter (id serial primary key, url varchar(255), cid int, "
                           u"sT varchar(255), sC text, sA text, recTime timestamp)");
        });
    }

    std::vector<std::string> stored() {
        std::vector<std::string> lines;
        onServer([&](ado::Connection& server) {
            ado::Recordset rows;
            for (rows.Open(u"select url, cid, sT, sC, sA, recTime from wxPrinter order by id", server); !rows.Eof();
                 rows.MoveNext()) {
                std::u16string line;
                for (std::size_t i = 0; i < rows.fieldCount(); ++i) {
                    line += (i == 0 ? u"" : u"|") + ado::toText(rows.value(i));
                }
                lines.push_back(toUtf8(line));
            }
        });
        return lines;
    }
    void import(JobSummary& summary) {
        MultipageImportOptions options;
        options.source = kSource;
        options.sink.server = kServer;
        importMultipageArticles(options, context({{u"Articles.siteAPrefix", u"http://a.example/art"}}), host, summary);
    }
    static std::u16string page(const std::u16string& title, const std::u16string& body) {
        return u"<title>" + title + u"</title><div id=\"content\"><div>a</div>" + body + u"<div>b</div></div><script>";
    }
};

TEST_F(MultipageServer, StoresMergedArticles) {
    const std::u16string half = letters(3900);
    crawlRows({{u"http://a.example/art/o'n10.htm", page(u"It's 题目", half), 35},
               {u"http://a.example/art/o'n10p2.htm", page(u"", half)},
               {u"http://a.example/art/n11.htm", page(u"题目二", u"正文")}});
    JobSummary summary(kMultipageImportJob);
    import(summary);
    const std::string cut = toUtf8(u"</div>" + half + u"<div>b");
    EXPECT_THAT(stored(),
                ElementsAre("http://a.example/art/o'n10.htm|35|It's 题目|" + cut + "<br>" + cut + "||2015-12-2 8:30:00",
                            "http://a.example/art/n11.htm||题目二|</div>正文<div>b||2015-12-2 8:30:00"));
    EXPECT_EQ(summary.saved, 2U);
    // the built-in login
    EXPECT_THAT(toUtf8(host.entries.front()), HasSubstr("empty password"));
}

TEST_F(MultipageServer, LeavesTheSourceAsItWasWhenTheServerDies) {
    crawlRows({{u"http://a.example/art/n10.htm", page(u"题目", u"正文")},
               {u"http://a.example/art/n11.htm", page(u"题目", u"正文")}});
    execute(kSource, {u"update bbsforum set sT='old', sC='old', blnPass=true"});
    const auto before = rows(kSource, u"select url, sT, sC, blnPass from bbsforum order by id");

    class KillingHost final : public RecordingHost {
    public:
        void yield() override {
            if (rowsBegun == 2 && !killed_) {
                killed_ = true;
                PostgresServer::shared().kill();
            }
        }

    private:
        bool killed_ = false;
    } killing;
    JobSummary summary(kMultipageImportJob);
    MultipageImportOptions options;
    options.source = kSource;
    options.sink.server = kServer;
    try {
        importMultipageArticles(options, context({{u"Articles.siteAPrefix", u"http://a.example/art"}}), killing,
                                summary);
        ADD_FAILURE() << "the server was gone";
    } catch (const ado::Error& error) {
        EXPECT_EQ(error.kind(), ado::Error::Kind::Connection) << error.what();
        EXPECT_THAT(error.what(), HasSubstr("SQLSTATE"));
        EXPECT_THAT(error.what(), HasSubstr("server 127.0.0.1"));
    }
    EXPECT_EQ(rows(kSource, u"select url, sT, sC, blnPass from bbsforum order by id"), before);
    EXPECT_EQ(summary.saved, 1U);

    EXPECT_THROW(import(summary), ado::Error) << "nobody listens";
    EXPECT_EQ(rows(kSource, u"select url, sT, sC, blnPass from bbsforum order by id"), before);

    PostgresServer::shared().start();
    EXPECT_EQ(stored().size(), 1U) << "what was stored before stays";
}

} // namespace
} // namespace kelb::jobs
