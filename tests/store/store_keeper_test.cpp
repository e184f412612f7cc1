#include "store/ClsStoreKeeper.h"

#include "ado/connection_string.h"
#include "ado/error.h"
#include "jet/database.h"
#include "jet/verify.h"
#include "platform/clock.h"
#include "platform/code_page.h"
#include "platform/memory_file_system.h"
#include "platform/random.h"
#include "platform/text.h"
#include "platform/utf8.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace kelb::store {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class CountingPump final : public platform::UiPump {
public:
    int yields = 0;
    void yield() override { ++yields; }
};

class StoreKeeper : public testing::Test {
protected:
    StoreKeeper() : environment(platform, {}), store(platform, environment) {
        files.makeFolders(u"X:\\home\\TestRec");
        jet::Database::create(platform, kPath)->commit();
    }

    void open() { ASSERT_TRUE(store.iniStoreKeeper(kPath, u"pages", u"learn")); }

    void execute(std::u16string_view statement) {
        ado::Connection connection(environment);
        connection.Open(ado::jetConnectionString(kPath));
        connection.Execute(statement);
    }

    /// The rows of a SELECT, fields joined by "|".
    std::vector<std::string> rows(std::u16string_view select) {
        ado::Connection connection(environment);
        connection.Open(ado::jetConnectionString(kPath));
        ado::Recordset set;
        std::vector<std::string> lines;
        for (set.Open(select, connection); !set.Eof(); set.MoveNext()) {
            std::u16string line;
            for (std::size_t i = 0; i < set.fieldCount(); ++i) {
                line += i == 0 ? u"" : u"|";
                line += ado::isNull(set.value(i)) ? std::u16string(u"NULL") : ado::toText(set.value(i));
            }
            lines.push_back(platform::toUtf8(line));
        }
        return lines;
    }
    std::size_t lengthOf(std::u16string_view field, std::u16string_view table) {
        ado::Connection connection(environment);
        connection.Open(ado::jetConnectionString(kPath));
        ado::Recordset set;
        set.Open(u"select * from " + std::u16string(table), connection);
        return set.text(field).size();
    }

    static constexpr std::u16string_view kPath = u"X:\\store.mdb";
    platform::MemoryFileSystem files;
    platform::SystemClock clock;
    platform::SystemRandom random;
    platform::Platform platform{files, clock, random, u"X:\\home"};
    ado::Environment environment;
    ClsStoreKeeper store;
    CountingPump pump;
};

TEST_F(StoreKeeper, DoesNothingBeforeItIsReady) {
    EXPECT_FALSE(store.iniStoreKeeper(u"X:\\missing.mdb", u"pages", u"learn"));
    EXPECT_FALSE(store.IsReady());
    EXPECT_FALSE(store.Save2DB(u"c", u"u", u"r", u"t"));
    EXPECT_FALSE(store.IsRecExists(u"u", u"pages"));
    EXPECT_FALSE(store.updateSexHoney(u"http://u", u"", u"", u"", u"", 1, 1));
    EXPECT_FALSE(store.updateLearn(u"http://u", 1, 2, 3, 4));
    EXPECT_FALSE(store.Save2DBURLsSrc(u"u", u"r", u"t", u"2015-12-2", u"1", u"toolong", u"0"));
    EXPECT_FALSE(store.Save2DBDVUser(u"n", u"e", u"1"));
    EXPECT_FALSE(store.Save2DBbbsforum(u"u", u"1", u"2", u"s", u"c", {2015, 12, 2, 0, 0, 0}));
    std::u16string list;
    EXPECT_FALSE(store.ReadFromDBURLsMV(u"", list));
    store.UpdateRec(u"u", u"pages", u"url", std::u16string(u"v"));
    EXPECT_EQ(store.getSpecHtml(u"u"), u"");
    EXPECT_EQ(store.errorText(), u"");
}

TEST_F(StoreKeeper, CreatesTheTablesThatAreMissing) {
    execute(u"create table DVUser (own varchar(10))");
    open();
    EXPECT_TRUE(store.IsReady());
    for (const char16_t* table :
         {u"pages", u"learn", u"myhoney", u"URLsMV", u"URLsMP3", u"URLsPIC", u"sexhoney", u"DVUser", u"bbsforum"}) {
        EXPECT_TRUE(store.tableExists(table)) << platform::toUtf8(table);
    }
    EXPECT_FALSE(store.tableExists(u"dvuser")) << "the comparison is exact";
    EXPECT_THAT(rows(u"select own from DVUser"), IsEmpty()) << "an existing table is left alone";
    execute(u"insert into myhoney (url) values ('http://x')");
    EXPECT_THROW(execute(u"insert into myhoney (url) values ('http://x')"), ado::Error) << "the index is unique";
    environment.flushAll();
    const auto database = environment.openDatabase(kPath, jet::Pager::Access::Read);
    EXPECT_TRUE(jet::verify(*database).empty());
    EXPECT_TRUE(store.iniStoreKeeper(kPath, u"pages", u"learn")) << "opening again finds everything there";
}

TEST_F(StoreKeeper, CutsAPageToItsColumns) {
    open();
    EXPECT_TRUE(store.Save2DB(std::u16string(204801, u'页'), std::u16string(300, u'u'), u"ref", u"text"));
    EXPECT_EQ(lengthOf(u"url", u"pages"), 254U);
    EXPECT_EQ(lengthOf(u"content", u"pages"), 204800U);
    EXPECT_THAT(rows(u"select id, refurl, reftxt from pages"), ElementsAre("1|ref|text"));
}

TEST_F(StoreKeeper, AbandonsAPageThatTheDatabaseRefuses) {
    execute(u"create table pages (url varchar(3), refurl varchar(3), reftxt varchar(3), content memo)");
    open();
    EXPECT_FALSE(store.Save2DB(u"c", u"long", u"r", u"t"));
    EXPECT_TRUE(store.Save2DB(u"c", u"new", u"r", u"t")) << "the refused row is gone";
    EXPECT_THAT(rows(u"select url from pages"), ElementsAre("new"));
}

TEST_F(StoreKeeper, FindsARowByItsAddress) {
    open();
    store.Save2DB(u"内容", u"http://a/O'Hara", u"", u"");
    EXPECT_TRUE(store.IsRecExists(u"http://a/O'Hara", u"pages"));
    EXPECT_TRUE(store.IsRecExists(u"HTTP://A/o'hara", u"pages"));
    EXPECT_FALSE(store.IsRecExists(u"http://a/O", u"pages"));
    EXPECT_EQ(store.getSpecHtml(u"http://a/o'hara"), u"内容");
    EXPECT_EQ(store.getSpecHtml(u"http://a/"), u"");
}

TEST_F(StoreKeeper, UpsertsOnlyAddressesOfTheWeb) {
    open();
    const std::u16string longest = u"http://" + std::u16string(1017, u'x');
    struct Case {
        const char* fault;
        std::u16string url, refurl;
        std::int32_t pictures, films;
        bool written;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"other scheme", u"https://a", u"", 1, 1, false},
             {"upper case", u"HTTP://a", u"", 1, 1, true},
             {"1024 units", longest, u"", 1, 1, true},
             {"1025 units", longest + u"x", u"", 1, 1, false},
             {"long referrer", u"http://b", std::u16string(1025, u'r'), 1, 1, false},
             {"10000", u"http://c", u"", 10000, 10000, true},
             {"pictures", u"http://d", u"", 10001, 1, false},
             {"films", u"http://d", u"", 1, 10001, false},
         }) {
        EXPECT_EQ(store.updateSexHoney(c.url, c.refurl, u"t", u"p", u"m", c.pictures, c.films), c.written) << c.fault;
    }
    EXPECT_TRUE(
        store.updateSexHoney(u"http://c", u"r", std::u16string(256, u't'), std::u16string(10241, u'p'), u"m", 3, 4));
    EXPECT_THAT(rows(u"select url, refurl, numsonpics, numsonmvs from sexhoney where url='http://c'"),
                ElementsAre("http://c|r|3|4"))
        << "the row is overwritten, not added again";
    execute(u"delete from sexhoney where url<>'http://c'");
    EXPECT_EQ(lengthOf(u"reftxt", u"sexhoney"), 255U);
    EXPECT_EQ(lengthOf(u"sonpics", u"sexhoney"), 10240U);
}

TEST_F(StoreKeeper, UpsertsLinkStatistics) {
    open();
    EXPECT_TRUE(store.updateLearn(u"http://a'b", 1, 2, 3, 4));
    EXPECT_TRUE(store.updateLearn(u"http://A'b", 5, 6, 7, 8));
    EXPECT_FALSE(store.updateLearn(u"ftp://a", 1, 2, 3, 4));
    EXPECT_THAT(rows(u"select url, numson1, numson2, numpic, nummv from learn"), ElementsAre("http://a'b|5|6|7|8"));
}

struct MediaCase {
    const char* name;
    std::u16string url, refurl, reftxt, date, size, type, down;
    bool saved, told;
};

class StoreKeeperMedia : public StoreKeeper, public testing::WithParamInterface<MediaCase> {};

TEST_P(StoreKeeperMedia, GuardsLengthsAndTypes) {
    const MediaCase& c = GetParam();
    open();
    EXPECT_EQ(store.Save2DBURLsSrc(c.url, c.refurl, c.reftxt, c.date, c.size, c.type, c.down), c.saved);
    EXPECT_EQ(store.errorText(), c.told ? u"出错(ClsStoreKeeper Save2DBURLsSrc): 字段超长, \r\n" + c.url : u"");
}

const std::u16string k254(254, u'x'), k255(255, u'x'), k256(256, u'x');

INSTANTIATE_TEST_SUITE_P(
    Rows, StoreKeeperMedia,
    testing::ValuesIn<MediaCase>({
        {"film", u"u", u"r", u"t", u"2015-12-2 8:30:00", u"12", u".mpg", u"True", true, false},
        {"widest", k255, k256, k254, u"2015-12-2", u"12", u"mpeg", u"0", true, false},
        {"address_too_long", k256, u"r", u"t", u"2015-12-2", u"12", u".jpg", u"0", false, true},
        {"text_too_long", u"u", u"r", k255, u"2015-12-2", u"12", u".mp3", u"0", false, true},
        {"no_date", u"u", u"r", u"t", u"yesterday", u"12", u".mp3", u"0", false, true},
        {"no_number", u"u", u"r", u"t", u"2015-12-2", u"12k", u".mp3", u"0", false, true},
        {"unknown_type_is_silent", u"u", u"r", u"t", u"2015-12-2", u"12", u".gif", u"0", false, false},
        {"long_type_is_told", u"u", u"r", u"t", u"2015-12-2", u"12", u".mpeg4", u"0", false, true},
        {"size_past_32_bits", u"u", u"r", u"t", u"2015-12-2", u"1e10", u".mp3", u"0", false, false},
        {"flag_that_is_none", u"u", u"r", u"t", u"2015-12-2", u"12", u".mp3", u"maybe", false, false},
    }),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(StoreKeeper, SavesMediaIntoTheTableOfTheirType) {
    open();
    EXPECT_TRUE(store.Save2DBURLsSrc(u"v", k256, u"t", u"2015-12-2 8:30:00", u"2.5", u".mpg", u"-1"));
    EXPECT_TRUE(store.Save2DBURLsSrc(u"p", u"r", u"t", u"2015-12-2", u"1", u".jpg", u"false"));
    EXPECT_TRUE(store.Save2DBURLsSrc(u"m", u"r", u"t", u"2015-12-2", u"1", u".mp3", u"false"));
    EXPECT_THAT(rows(u"select url, refurl, reftxt, lastcheckdate, srcsize, srctype, blndown from URLsMV"),
                ElementsAre("v||t|2015-12-2 8:30:00|2|.mpg|True"));
    EXPECT_THAT(rows(u"select url from URLsPIC"), ElementsAre("p"));
    EXPECT_THAT(rows(u"select url from URLsMP3"), ElementsAre("m"));
}

TEST_F(StoreKeeper, TellsSixGuardFailures) {
    open();
    for (int i = 0; i < 8; ++i) {
        EXPECT_FALSE(store.Save2DBURLsSrc(u"u", u"r", u"t", u"", u"1", u".mp3", u"0"));
    }
    EXPECT_EQ(platform::split(store.errorText(), u"字段超长").size(), 7U);
}

TEST_F(StoreKeeper, SavesAUserOnceAndTellsTheFirstClash) {
    open();
    EXPECT_TRUE(store.Save2DBDVUser(u"小板凳", u"a@x", u"17"));
    EXPECT_FALSE(store.Save2DBDVUser(u"别名", u"A@X", u"18"));
    EXPECT_FALSE(store.Save2DBDVUser(u"小板凳", u"b@x", u"19"));
    EXPECT_EQ(store.errorText(),
              u"\r\nClsStoreKeeper save2DBDVUser Found Data 异常: userName: 别名 userEmail: A@X userID: 18");
    for (const auto& [name, mail, id] : std::initializer_list<std::array<std::u16string, 3>>{{u"", u"c@x", u"1"},
                                                                                             {u"n", u"", u"1"},
                                                                                             {u"n", u"c@x", u""},
                                                                                             {u"n", u"c@x", u"x1"},
                                                                                             {k255, u"c@x", u"1"}}) {
        EXPECT_FALSE(store.Save2DBDVUser(name, mail, id));
    }
    EXPECT_TRUE(store.Save2DBDVUser(k254, u"d'd@x", u"1"));
    EXPECT_EQ(rows(u"select userName from DVUser").size(), 2U);
}

TEST_F(StoreKeeper, RefreshesAThreadAfterMoreThanSevenDays) {
    open();
    const auto save = [this](const char16_t* url, platform::DateTime date) {
        return store.Save2DBbbsforum(url, u"b'1", u"7", u"s", u"c", date);
    };
    EXPECT_TRUE(save(u"first", {2015, 12, 1, 23, 59, 0}));
    EXPECT_FALSE(save(u"same week", {2015, 12, 8, 23, 59, 59})) << "seven days";
    EXPECT_TRUE(save(u"next week", {2015, 12, 9, 0, 0, 0})) << "eight days by the calendar";
    EXPECT_FALSE(save(u"older", {2015, 1, 1, 0, 0, 0}));
    execute(u"update bbsforum set recdate=null");
    EXPECT_TRUE(save(u"dateless", {2015, 1, 1, 0, 0, 0}));
    EXPECT_THAT(rows(u"select url, boardid, articleid, start, content, recdate from bbsforum"),
                ElementsAre("dateless|b'1|7|s|c|2015-1-1 0:00:00"));
}

TEST_F(StoreKeeper, ReadsABoundedListOfFilms) {
    open();
    for (int i = 0; i < 310; ++i) {
        store.Save2DBURLsSrc(platform::number(i), u"", u"", u"2015-12-2", u"1", u".mpg", u"0");
    }
    std::u16string list = u"held|";
    EXPECT_TRUE(store.ReadFromDBURLsMV(u"select * from URLsMV order by id", list));
    EXPECT_EQ(platform::split(list, u"<||>").size(), 303U) << "302 addresses, each with its separator";
    EXPECT_TRUE(list.starts_with(u"held|0<||>1<||>"));
    EXPECT_TRUE(list.ends_with(u"<||>301<||>"));

    std::u16string full(29995, u'x');
    EXPECT_TRUE(store.ReadFromDBURLsMV(u"select * from URLsMV order by id", full));
    EXPECT_EQ(full.substr(29995), u"0<||>1<||>") << "ends behind the append that passes 30,000";

    std::u16string none;
    EXPECT_THROW(store.ReadFromDBURLsMV(u"", none), ado::Error) << "our own table has no lastvisitdate";
}

TEST_F(StoreKeeper, UpdatesASingleRowOnly) {
    open();
    for (const char16_t* url : {u"one", u"two", u"two"}) {
        store.Save2DB(u"", url, u"", u"");
    }
    for (const char16_t* url : {u"one", u"two", u"none"}) {
        store.UpdateRec(url, u"pages", u"reftxt", std::u16string(u"changed"));
    }
    EXPECT_THAT(rows(u"select url, reftxt from pages order by id"), ElementsAre("one|changed", "two|", "two|"));
}

TEST_F(StoreKeeper, NumbersOverflowFiles) {
    const auto path = [](const char16_t* name) { return u"X:\\home\\TestRec\\" + std::u16string(name); };
    files.writeFile(path(u"Store0.txt"), "there");
    store.store2Disk(u"正文", u"", u"", pump);
    EXPECT_EQ(pump.yields, 1);
    store.store2Disk(u"正文ñ", u"说明", u"", pump);
    store.store2Disk(u"x", u"", u".htm", pump);
    EXPECT_EQ(files.readFile(path(u"Store0.txt")), "there");
    EXPECT_EQ(platform::decode936(files.readFile(path(u"Store1.txt"))), u" 保存了本文件。\r\n正文");
    EXPECT_EQ(platform::decode936(files.readFile(path(u"Store2.txt"))), u"说明 保存了本文件。\r\n正文?");
    EXPECT_TRUE(files.fileExists(path(u"Store2.htm"))) << "the number is not advanced after writing";
    EXPECT_EQ(store.replacedCharacters(), 1U);
    EXPECT_EQ(store.lastStoredFile(), path(u"Store2.htm"));
}

TEST_F(StoreKeeper, EndsTheNumbersAt32767) {
    for (int i = 0; i <= 32767; ++i) {
        files.writeFile(u"X:\\home\\TestRec\\Store" + platform::number(i) + u".txt", "");
    }
    EXPECT_THROW(store.store2Disk(u"x", u"", u"", pump), std::overflow_error);
}

} // namespace
} // namespace kelb::store
