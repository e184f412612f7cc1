#include "jobs/add_fields.h"
#include "jobs/export_users.h"
#include "jobs/job_error.h"
#include "tests/jobs/job_fixture.h"

#include <gmock/gmock.h>

namespace kelb::jobs {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class MinorJobs : public JobTest {
protected:
    static constexpr std::u16string_view kUsers = u"X:\\users.mdb";

    JobSummary exportFrom(std::u16string_view database) {
        JobSummary summary(kExportUsersJob);
        exportUsers({std::u16string(database)}, context(), host, summary);
        return summary;
    }
    void makeUsers() { execute(kUsers, {u"create table DVUser (id int identity(1,1), userName varchar(255))"}); }
};

TEST_F(MinorJobs, ExportsNamesThatBeginWithADoubleByteCharacter) {
    makeUsers();
    for (const char16_t* name : {u"'  修电视 '", u"'tom'", u"''", u"NULL", u"'\u3000前'", u"'αβ'", u"'  '"}) {
        execute(kUsers, {u"insert into DVUser (userName) values (" + std::u16string(name) + u")"});
    }
    host.stopAfter = 0; // cannot be stopped
    const JobSummary summary = exportFrom(kUsers);
    EXPECT_EQ(platform::decode936(files.readFile(u"X:\\home\\TestRec\\Store0.txt")),
              u"Command3_Click 提取DVUserName 保存了本文件。\r\n修电视|\u3000前|αβ|");
    EXPECT_THAT(host.boxes, ElementsAre(u"网页内容提取|共有: 7 条"));
    EXPECT_TRUE(host.entries.empty());
    EXPECT_EQ(summary.saved, 3U);
    EXPECT_EQ(summary.skipped, 4U);
    EXPECT_EQ(summary.overflowFiles, 1U);
}

TEST_F(MinorJobs, ExportsTheFirst300RowsOnly) {
    makeUsers();
    auto at = platformOf(files);
    {
        ado::Environment environment(at, {});
        ado::Connection connection(environment);
        connection.Open(ado::jetConnectionString(kUsers));
        ado::Recordset users;
        users.Open(u"DVUser", connection, ado::CursorType::Keyset, ado::LockType::Optimistic);
        for (int i = 1; i <= 301; ++i) {
            users.AddNew();
            users.set(u"userName", u"名" + platform::fromUtf8(std::to_string(i)));
            users.Update();
        }
    }
    const JobSummary summary = exportFrom(kUsers);
    EXPECT_EQ(summary.rows, 300U);
    EXPECT_EQ(summary.note, "only the first 300 rows were read");
    EXPECT_EQ(host.boxes.front(), u"网页内容提取|共有: 301 条");
    EXPECT_TRUE(platform::decode936(files.readFile(u"X:\\home\\TestRec\\Store0.txt")).ends_with(u"|名300|"));
}

TEST_F(MinorJobs, ExportNamesAMissingTable) {
    try {
        exportFrom(kDest);
        ADD_FAILURE() << "no error";
    } catch (const JobError& error) {
        EXPECT_THAT(error.what(), HasSubstr("no table DVUser"));
    }
}

TEST_F(MinorJobs, AddsFourColumnsOnce) {
    const std::u16string path = u"D:\\KelbFolder\\Comb(站2).mdb";
    execute(path, {u"create table wxhx (url varchar(255))", u"insert into wxhx (url) values ('u')"});
    const auto add = [&](JobSummary& summary) {
        addFields({}, context({{u"AddFields.siteLabel", u"站"}}), host, summary);
    };
    JobSummary first(kAddFieldsJob), second(kAddFieldsJob);
    add(first);
    EXPECT_THAT(rows(path, u"select url, blnPass, blnPosted, sT, sC from wxhx"),
                ElementsAre("u|False|False|NULL|NULL"));
    EXPECT_THAT(host.boxes, ElementsAre(u"网页内容提取|ok"));
    try {
        add(second);
        ADD_FAILURE() << "no error";
    } catch (const ado::Error& error) {
        EXPECT_THAT(error.what(), HasSubstr("blnPass"));
    }
    EXPECT_EQ(host.boxes.size(), 1U);
}

TEST_F(MinorJobs, AddFieldsNeedsItsSettingOrADatabase) {
    JobSummary summary(kAddFieldsJob);
    try {
        addFields({}, context(), host, summary);
        ADD_FAILURE() << "no error";
    } catch (const SettingError& error) {
        EXPECT_THAT(error.what(), HasSubstr("[AddFields] siteLabel"));
    }
    EXPECT_THROW(addFields({std::u16string(kDest), u"none"}, context(), host, summary), JobError);
    execute(kDest, {u"create table part (sT memo)"});
    EXPECT_THROW(addFields({std::u16string(kDest), u"part"}, context(), host, summary), ado::Error);
    EXPECT_THAT(rows(kDest, u"select * from part"), ElementsAre()) << "the columns before are added";
    EXPECT_EQ(summary.counts, (std::vector<std::pair<std::string, std::size_t>>{{"fields", 2}}));
}

} // namespace
} // namespace kelb::jobs
