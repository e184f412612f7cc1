#include "jobs/param_import.h"

#include "ado/error.h"
#include "tests/jobs/product_fixture.h"
#include "tests/odbc/server_jobs.h"

#include <gmock/gmock.h>

namespace kelb::jobs {
namespace {

using platform::toUtf8;
using testing::ElementsAre;
using testing::HasSubstr;

/// Product pages of a folder, the knowledge table on a server.
class ParamServer : public ServerJob<ProductTest> {
protected:
    ParamServer() {
        onServer([](ado::Connection& server) {
            server.Execute(u"drop table if exists wxKnowledge");
            server.Execute(u"create table wxKnowledge (" + knowledgeFields(u"50") + u")");
        });
    }

    std::string stored() {
        std::string lines;
        onServer([&](ado::Connection& server) {
            ado::Recordset rows;
            for (rows.Open(u"select TVName, TVCode, param2 from wxKnowledge order by TVName", server); !rows.Eof();
                 rows.MoveNext()) {
                lines +=
                    toUtf8(rows.text(u"TVName") + u"|" + rows.text(u"TVCode") + u"|" + rows.text(u"param2") + u"\n");
            }
        });
        return lines;
    }
    JobSummary import(ado::Environment::Options databases = {}) {
        Context context(platformOf(files), Configuration(), databases);
        ParamImportOptions options;
        options.folder = kFolder;
        options.sink.server = kServer;
        options.saves = [] { return true; };
        JobSummary summary(kParamImportJob);
        importParameters(options, context, host, summary);
        return summary;
    }
    void restart() { files.removeFile(u"X:\\shop\\CounterResp.txt"); }
};

TEST_F(ParamServer, StoresEachNameOnce) {
    save(u"0\\1.htm", product(u"A型（TLM42V66）参数_", {{u"屏幕尺寸", u"42' 英寸"}}));
    save(u"0\\2.htm", product(u"A型（TLM42V66）参数_", {}));
    save(u"1\\3.htm", product(u"B型(LC-32A33)款", {}));
    EXPECT_EQ(import().saved, 2U);
    const std::string both = "A型|TLM42V66|42' 英寸\nB型|LC-32A33|\n";
    EXPECT_EQ(stored(), both);
    restart();
    EXPECT_EQ(import().saved, 0U);

    restart();
    save(u"0\\0.htm", product(u"C型(LC-37A33)款", {}));
    EXPECT_EQ(import({.dryRun = true}).saved, 1U);
    EXPECT_EQ(stored(), both) << "a dry run stores nothing";
}

TEST_F(ParamServer, NamesThePageThatTheServerRefuses) {
    save(u"0\\1.htm", product(u"A型", {}));
    save(u"0\\2.htm", product(std::u16string(51, u'x'), {}));
    for (int run = 0; run < 2; ++run) {
        try {
            import();
            ADD_FAILURE() << "51 characters went into a field of 50";
        } catch (const std::exception& error) {
            EXPECT_THAT(error.what(), HasSubstr("(Page: X:\\shop\\0\\2.htm)"));
        }
        EXPECT_EQ(stored(), "A型||\n") << "what was stored before stays";
    }
}

} // namespace
} // namespace kelb::jobs
