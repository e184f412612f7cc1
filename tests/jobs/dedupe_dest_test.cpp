#include "jobs/dedupe_dest.h"

#include "jobs/job_error.h"
#include "tests/jobs/job_fixture.h"

#include <gmock/gmock.h>

namespace kelb::jobs {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class DedupeDestTest : public JobTest {
protected:
    DedupeDestTest() {
        execute(kDest, {u"create table wxGG (id int identity(1,1) NOT NULL, url varchar(255), recTime datetime)"});
    }
    void add(const std::u16string& url, const std::u16string& day) {
        execute(kDest, {u"insert into wxGG (url, recTime) values (" + url + u", #2015-12-" + day + u"#)"});
    }
    JobSummary dedupe(const std::u16string& table = u"") {
        JobSummary summary(kDedupeDestJob);
        dedupeDest({std::u16string(kDest), table}, context(), host, summary);
        return summary;
    }
    std::vector<std::string> ids() { return rows(kDest, u"select id from wxGG order by id"); }
};

TEST_F(DedupeDestTest, KeepsTheRowStoredLastOfEachKey) {
    add(u"'http://b/thread-1-1-1.html'", u"01"); // stored before the next one, so it goes
    add(u"'http://b/thread-1-1-2.html'", u"03");
    add(u"'http://b/thread-1-2-1.html'", u"02"); // another key: up to the last dash
    add(u"'http://b/Thread-1-1-3.html'", u"01"); // case counts
    add(u"'it''s-1'", u"02");
    add(u"'it''s-2'", u"01");
    host.stopAfter = 0; // cannot be stopped
    const JobSummary summary = dedupe();
    EXPECT_THAT(ids(), ElementsAre("2", "3", "4", "5"));
    EXPECT_EQ(summary.rows, 6U);
    EXPECT_EQ(summary.deletedRows, 2U);
    EXPECT_EQ(summary.skipped, 6U);
}

TEST_F(DedupeDestTest, AddressesWithoutADashAndNullHaveOneKey) {
    add(u"'http://b/1.html'", u"01");
    add(u"NULL", u"03");
    add(u"''", u"02");
    dedupe();
    EXPECT_THAT(ids(), ElementsAre("2"));
}

TEST_F(DedupeDestTest, ShowsItsCountAndEndsWithABox) {
    add(u"'a-1'", u"01");
    add(u"'a-2'", u"02");
    dedupe();
    EXPECT_THAT(host.progress, ElementsAre(u"Deleted: 0 All: 1", u"Deleted: 1 All: 2"));
    EXPECT_THAT(host.outcomes, ElementsAre(u"Deleted: 1 All: 2"));
    EXPECT_THAT(host.boxes, ElementsAre(u"网页内容提取|输出表的重复问题解决完毕!"));
    EXPECT_TRUE(host.entries.empty()) << "no count line";
}

TEST_F(DedupeDestTest, TakesAnotherTableAndNamesWhatIsMissing) {
    execute(kDest, {u"insert into wxAll (url, recTime) values ('a-1', #2015-12-01#)",
                    u"insert into wxAll (url, recTime) values ('a-2', #2015-12-02#)", u"create table t (url memo)"});
    dedupe(u"wxAll");
    EXPECT_THAT(rows(kDest, u"select url from wxAll"), ElementsAre("a-2"));
    try {
        dedupe(u"t");
        ADD_FAILURE() << "no error";
    } catch (const JobError& error) {
        EXPECT_THAT(error.what(), HasSubstr("table t has no column recTime"));
    }
}

TEST_F(DedupeDestTest, ARowThatTheTrashDoesNotTakeStays) {
    add(u"'a-1'", u"01");
    add(u"'a-2'", u"02");
    context().setTrashFolder(u"X:\\trash");
    files.beforeOperation = [](std::string_view operation, std::u16string_view path) {
        if (operation == "write" && path.starts_with(u"X:\\trash")) {
            throw platform::FileError(platform::FileError::Kind::NoSpace, operation, path, 28, "disk full");
        }
    };
    EXPECT_THROW(dedupe(), platform::FileError);
    files.beforeOperation = nullptr;
    EXPECT_THAT(ids(), ElementsAre("1", "2"));
}

} // namespace
} // namespace kelb::jobs
