#include "jobs/sink_connection.h"

#include "ado/error.h"
#include "jobs/job_error.h"
#include "tests/jobs/job_fixture.h"

namespace kelb::jobs {
namespace {

using SinkConnection = JobTest;

class WarnedHost final : public JobHost {
public:
    std::vector<std::u16string> warnings;
    void warning(std::u16string_view text) override { warnings.emplace_back(text); }
    bool stopRequested() override { return false; }
    void log(std::u16string_view) override { FAIL() << "a warning is no log entry"; }
    void showProgress(std::u16string_view, std::size_t, std::size_t) override {}
    void message(std::u16string_view, std::u16string_view) override {}
    PageLocation pages() override { return {}; }
    void yield() override {}
};

TEST_F(SinkConnection, TakesWhatTheUserGaveBeforeTheSettings) {
    const Settings settings = {{u"SqlServer.server", u"fileserver"}, {u"SqlServer.wxDBConnection", u"DSN=knowledge"}};
    const Settings serverOnly = {{u"SqlServer.server", u" fileserver "}};
    struct Case {
        SinkOptions given;
        const Settings& settings;
        std::u16string_view expected;
    };
    const Case cases[] = {
        {{u"DSN=mine;pwd=x", u"h"}, settings, u"DSN=mine;pwd=x"},
        {{u"", u" h\\x,1433"}, settings, u"driver={sql server};server=h\\x,1433;Database=wxDB;uid=sa;pwd="},
        {{}, settings, u"DSN=knowledge"},
        {{u" ", u" "}, serverOnly, u"driver={sql server};server=fileserver;Database=wxDB;uid=sa;pwd="},
        {{u"D:\\a=b;c.mdb", u""}, settings, u"D:\\a=b;c.mdb"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(chosenSink(each.given, configuration(each.settings)).connectionString, each.expected);
    }
    EXPECT_EQ(chosenSink({u"DSN=mine;pwd=secret", u""}, configuration({})).shown, u"DSN=mine;pwd=***");
    EXPECT_EQ(mendDbConnectionString(u"h"), u"driver={sql server};server=h;Database=mendDB;");
}

TEST_F(SinkConnection, RefusesToGuessAndToLetAnAddressChangeTheString) {
    EXPECT_THROW(chosenSink({}, configuration({})), SettingError);
    for (const std::u16string_view server : {u"h;Trusted_Connection=yes", u"{h}", u"uid=x", u"h\r\n"}) {
        EXPECT_THROW(chosenSink({u"", std::u16string(server)}, configuration({})), SettingError);
    }
}

TEST_F(SinkConnection, OpensAPathAsADatabaseFileWithoutAWarning) {
    WarnedHost warned;
    ado::Connection connection(context().databases());
    openSink(connection, chosenSink({std::u16string(kDest), u""}, context().configuration()), warned);
    ado::Recordset rows;
    rows.Open(u"select * from wxAll", connection, ado::CursorType::Keyset, ado::LockType::Optimistic);
    rows.AddNew();
    rows.set(u"url", u"http://a/");
    rows.Update();
    rows.Close();
    connection.Close();
    EXPECT_EQ(this->rows(kDest, u"select url from wxAll"), std::vector<std::string>{"http://a/"});
    EXPECT_TRUE(warned.warnings.empty());
}

TEST_F(SinkConnection, WarnsOfAnAdministratorWithoutPasswordOnly) {
    struct Case {
        std::u16string_view connection;
        std::size_t warnings;
    };
    // No provider is named, so that nothing is asked of a network.
    const Case cases[] = {{u"Provider=none;UID=sa;PWD=", 1},
                          {u"Provider=none;uid=sa;pwd=x", 0},
                          {u"Provider=none;uid=me;pwd=", 0},
                          {u"Provider=none", 0}};
    for (const Case& each : cases) {
        WarnedHost warned;
        ado::Connection connection(context().databases());
        const Sink sink = chosenSink({std::u16string(each.connection), u""}, context().configuration());
        EXPECT_THROW(openSink(connection, sink, warned), ado::Error);
        EXPECT_EQ(warned.warnings.size(), each.warnings) << platform::toUtf8(each.connection);
    }
}

} // namespace
} // namespace kelb::jobs
