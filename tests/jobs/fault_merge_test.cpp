#include "jobs/fault_merge.h"

#include "jet/verify.h"
#include "jobs/job_error.h"
#include "jobs/w2Table4TVCode.h"
#include "tests/jobs/job_fixture.h"

#include <gmock/gmock.h>

#include <functional>

namespace kelb::jobs {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::u16string_view kMergeDb = u"D:\\KelbFolder\\Comb(站1).mdb";
const std::u16string kNewTable =
    u"create table wxtcl (id int identity(1,1) NOT NULL, url varchar(255), sT varchar(255), "
    u"sC memo, TVCode varchar(255), blnPass yesno, blnJoined yesno)";

class FaultMergeTest : public JobTest {
protected:
    FaultMergeTest() { execute(kMergeDb, {kNewTable}); }
    void TearDown() override { files.beforeOperation = nullptr; }

    /// An approved record of the site.
    void add(const std::u16string& name, const std::u16string& code, const std::u16string& site = u"ask.site") {
        execute(kMergeDb, {u"insert into wxtcl (url, sT, sC, TVCode, blnPass) values ('http://" + site + u"/" + name +
                           u"', '问" + name + u"', '答" + name + u"', '" + code + u"', true)"});
    }
    static Settings settings() { return {{u"Merge.siteFragment", u"ask.site"}, {u"Merge.siteLabel", u"站"}}; }
    JobSummary merge(const FaultMergeOptions& options = {}, const Settings& given = settings()) {
        JobSummary summary(kFaultMergeJob);
        mergeFaults(options, context(given), host, summary);
        return summary;
    }
    std::vector<std::string> records() {
        return rows(kMergeDb, u"select id, sT, sC, blnPass, blnJoined from wxtcl order by id");
    }
    static constexpr const char* kFirstMerged =
        "1|TCL王牌L32的故障总结|故障一：问甲<br>\r\n答甲<P>\r\n故障二：问乙<br>\r\n答乙|True|True";
};

TEST_F(FaultMergeTest, MergesTwoOfThreeRecords) {
    add(u"甲", u"L32");
    add(u"乙", u"L32");
    add(u"丙", u"L32");
    add(u"丁", u"L42");
    host.stopAfter = 0; // cannot be stopped
    const JobSummary summary = merge();
    EXPECT_THAT(records(), ElementsAre(kFirstMerged, "2|问乙|答乙|False|False", "3|问丙|答丙|True|False",
                                       "4|问丁|答丁|True|False"));
    EXPECT_EQ(summary.saved, 1U);
    EXPECT_EQ(summary.rows, 4U);
    EXPECT_THAT(host.boxes, ElementsAre(u"网页内容提取|0005")); // one behind the last record
    EXPECT_TRUE(host.entries.empty());
    EXPECT_FALSE(host.windowClosed);
    merge(); // what was merged or withdrawn is not taken again
    EXPECT_EQ(records()[0], kFirstMerged);
    EXPECT_EQ(host.boxes.back(), u"网页内容提取|0003");
}

TEST_F(FaultMergeTest, ThePartnerMayBeOfAnySiteButMustBeApprovedAndUnmerged) {
    add(u"甲", u"L32");
    add(u"外", u"L32", u"other.site");
    add(u"乙", u"l32"); // codes are compared without case
    execute(kMergeDb, {u"update wxtcl set blnJoined=true where id=2", u"insert into wxtcl (url, TVCode) values "
                                                                      u"('http://ask.site/4', 'L32')"});
    merge();
    EXPECT_THAT(rows(kMergeDb, u"select id, blnPass, blnJoined from wxtcl order by id"),
                ElementsAre("1|True|True", "2|True|True", "3|False|False", "4|False|False"));
}

TEST_F(FaultMergeTest, ShowsTheQueryOfTheRecordBefore) {
    add(u"甲", u"L32");
    add(u"乙", u"L42");
    merge();
    EXPECT_THAT(host.progress,
                ElementsAre(u"查询：", u"查询：select * from wxtcl where blnPass=true and TVCode='L32' and id<>1 and "
                                       u"blnJoined=false"));
}

TEST_F(FaultMergeTest, AddsTheColumnThatIsMissingAndGoesOn) {
    const std::u16string path = u"X:\\old.mdb";
    execute(path,
            {u"create table t (id int identity(1,1), url memo, sT memo, sC memo, TVCode varchar(9), blnPass yesno)",
             u"insert into t (url, sT, sC, TVCode, blnPass) values ('ask.site', 'a', 'b', 'L3', true)",
             u"insert into t (url, sT, sC, TVCode, blnPass) values ('ask.site', 'c', 'd', 'L3', true)"});
    merge({path, u"t"});
    EXPECT_THAT(host.boxes, ElementsAre(u"网页内容提取|没有Field: TVCode,已创建，请重新开始", u"网页内容提取|0003"));
    EXPECT_TRUE(host.windowClosed);
    EXPECT_THAT(rows(path, u"select blnPass, blnJoined from t order by id"), ElementsAre("True|True", "False|False"));
}

TEST_F(FaultMergeTest, AnApostropheInACodeEndsTheJobAndKeepsEarlierMerges) {
    add(u"甲", u"L32");
    add(u"乙", u"L32");
    add(u"丙", u"L''4");
    add(u"丁", u"L52");
    add(u"戊", u"L52");
    try {
        merge();
        ADD_FAILURE() << "no error";
    } catch (const ado::Error& error) {
        EXPECT_EQ(error.kind(), ado::Error::Kind::Syntax);
        EXPECT_THAT(error.what(), HasSubstr("TVCode='L'4'"));
    }
    EXPECT_TRUE(host.boxes.empty());
    EXPECT_THAT(records(), ElementsAre(kFirstMerged, "2|问乙|答乙|False|False", "3|问丙|答丙|True|False",
                                       "4|问丁|答丁|True|False", "5|问戊|答戊|True|False"));
}

TEST_F(FaultMergeTest, AnEmptyTableNameDoesNothing) {
    EXPECT_EQ(merge({{}, u""}, {}).note, "no table is named: nothing was merged");
    EXPECT_TRUE(host.boxes.empty());
}

TEST_F(FaultMergeTest, RefusesWithoutItsSettingsBeforeItOpensAnything) {
    bool opened = false;
    files.beforeOperation = [&opened](std::string_view operation, std::u16string_view) {
        opened = opened || operation == "open";
    };
    JobSummary summary(kFaultMergeJob);
    const auto messageWith = [&](const Settings& given) -> std::string {
        Context other(platformOf(files), configuration(given), {});
        try {
            mergeFaults({}, other, host, summary);
        } catch (const SettingError& error) {
            return error.what();
        }
        return "no error";
    };
    EXPECT_THAT(messageWith({}), HasSubstr("[Merge] siteFragment"));
    EXPECT_THAT(messageWith({{u"Merge.siteFragment", u"ask.site"}}), HasSubstr("[Merge] siteLabel"));
    EXPECT_FALSE(opened);
}

TEST_F(FaultMergeTest, NamesMissingColumns) {
    try {
        merge({std::u16string(kDest), u"wxAll"});
        ADD_FAILURE() << "no error";
    } catch (const JobError& error) {
        EXPECT_THAT(error.what(), HasSubstr("table wxAll has no column TVCode, blnPass"));
    }
}

TEST_F(FaultMergeTest, APartnerIsNotWithdrawnWhenTheSummaryDoesNotFit) {
    const std::u16string path = u"X:\\small.mdb";
    execute(path, {u"create table t (id int identity(1,1), url memo, sT memo, sC varchar(10), TVCode memo, "
                   u"blnPass yesno, blnJoined yesno)",
                   u"insert into t (url, sT, sC, TVCode, blnPass) values ('ask.site', 'a', 'b', 'L3', true)",
                   u"insert into t (url, sT, sC, TVCode, blnPass) values ('ask.site', 'c', 'd', 'L3', true)"});
    EXPECT_THROW(merge({path, u"t"}), ado::Error);
    EXPECT_THAT(rows(path, u"select sT, sC, blnPass, blnJoined from t order by id"),
                ElementsAre("a|b|True|False", "c|d|True|False"));
}

/// Time runs so fast that a commit is due whenever one is asked for.
class RushingClock final : public platform::Clock {
public:
    platform::DateTime now() const override { return {2015, 12, 2, 8, 30, 0}; }
    double steadySeconds() const override { return seconds_ += 10; }

private:
    mutable double seconds_ = 0;
};

struct PowerCut : std::exception {};

/// What the disk may hold when the machine stops before its nth operation; no value when it got through.
std::optional<std::vector<std::map<std::u16string, std::string>>>
cutAt(std::size_t nth, platform::MemoryFileSystem& disk, const std::function<void()>& work) {
    std::vector<std::map<std::u16string, std::string>> left;
    std::size_t done = 0;
    disk.beforeOperation = [&](std::string_view, std::u16string_view) {
        if (done++ < nth) {
            return;
        }
        if (left.empty()) {
            left.push_back(disk.afterPowerCut([](std::size_t) { return true; }));
            left.push_back(disk.afterPowerCut([](std::size_t) { return false; }));
            left.push_back(disk.afterPowerCut([](std::size_t change) { return change % 2 != 0; }));
        }
        throw PowerCut();
    };
    try {
        work();
    } catch (const std::exception&) {
    }
    disk.beforeOperation = nullptr;
    return left.empty() ? std::nullopt : std::optional(std::move(left));
}

TEST_F(FaultMergeTest, APowerCutNeverLeavesHalfAPair) {
    for (int i = 0; i < 3; ++i) {
        add(u"甲" + platform::fromUtf8(std::to_string(i)), u"L" + platform::fromUtf8(std::to_string(i)));
        add(u"乙" + platform::fromUtf8(std::to_string(i)), u"L" + platform::fromUtf8(std::to_string(i)));
    }
    const std::string database = files.readFile(kMergeDb);
    RushingClock rushing;
    std::size_t partly = 0; // cuts after some merges and before others
    for (std::size_t nth = 0;; ++nth) {
        platform::MemoryFileSystem disk;
        disk.replaceFile(kMergeDb, database);
        const auto left = cutAt(nth, disk, [&] {
            Context doomed({disk, rushing, random, u"X:\\home"}, configuration(settings()), {});
            JobSummary summary(kFaultMergeJob);
            mergeFaults({}, doomed, host, summary);
        });
        if (!left) {
            break;
        }
        for (const auto& bytes : *left) {
            files.removeFile(kMergeDb);
            for (const auto& [path, content] : bytes) {
                files.writeFile(path, content);
            }
            auto at = platformOf(files);
            {
                const auto opened = jet::Database::open(at, kMergeDb, {.access = jet::Pager::Access::Write});
                ASSERT_TRUE(jet::verify(*opened).empty()) << nth;
            }
            const auto joined = rows(kMergeDb, u"select sC from wxtcl where blnJoined=true");
            const auto withdrawn = rows(kMergeDb, u"select sC from wxtcl where blnPass=false");
            ASSERT_EQ(joined.size(), withdrawn.size()) << nth;
            for (std::size_t i = 0; i < joined.size(); ++i) {
                ASSERT_THAT(joined[i], HasSubstr("<br>\r\n" + withdrawn[i])) << nth;
            }
            if (joined.size() == 1 || joined.size() == 2) {
                ++partly;
            }
        }
    }
    EXPECT_GT(partly, 0U) << "no cut fell between two merges";
}

class SetCodeTable : public JobTest {};

TEST_F(SetCodeTable, CountsACodeAndItsRecords) {
    const std::u16string path = u"X:\\codes.mdb";
    execute(path, {u"create table codes (TVCode varchar(50), occurTimes int, fromIDs memo)",
                   u"insert into codes (TVCode) values ('OLD')"});
    ado::Connection connection(context().databases());
    connection.Open(ado::jetConnectionString(path));
    w2Table4TVCode(connection, u"L32", u"7", u"codes");
    w2Table4TVCode(connection, u"L32", u"9", u"codes");
    w2Table4TVCode(connection, u"OLD", u"5", u"codes"); // Null counts as nothing
    EXPECT_THROW(w2Table4TVCode(connection, u"L'3", u"1", u"codes"), ado::Error);
    connection.Close();
    EXPECT_THAT(rows(path, u"select * from codes order by TVCode"), ElementsAre("L32|2|7,9", "OLD|1|,5"));
}

} // namespace
} // namespace kelb::jobs
