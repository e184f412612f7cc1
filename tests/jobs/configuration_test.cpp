#include "jobs/configuration.h"

#include "jobs/job_error.h"

#include <gmock/gmock.h>

#include <map>

namespace kelb::jobs {
namespace {

using Values = std::map<std::u16string, std::u16string>;

Configuration read(const Values& values) {
    return Configuration([&values](std::u16string_view section, std::u16string_view key) {
        const auto found = values.find(std::u16string(section) + u"." + std::u16string(key));
        return found == values.end() ? std::u16string() : found->second;
    });
}

TEST(Configuration, HasTheDefaultsOfTheTable) {
    const Configuration configuration;
    EXPECT_EQ(configuration.text(Setting::PathsWxdb), u"D:\\KelbFolder(Output)\\wxdb.mdb");
    EXPECT_EQ(configuration.text(Setting::PathsMultiDb), u"D:\\KelbFolder4打印机\\Comb.mdb");
    EXPECT_EQ(configuration.text(Setting::ForumBoardName), u"");
    EXPECT_EQ(configuration.number(Setting::ForumImportCid), 28);
    EXPECT_EQ(configuration.number(Setting::ForumFillCid), 40);
    EXPECT_EQ(configuration.number(Setting::SafetyMaxDeletePercent), 20);
    EXPECT_EQ(configuration.pageEncoding(), platform::PageEncoding::Auto);
    EXPECT_EQ(configuration.texts(Setting::ArticlesRow5TitleStarts), std::vector<std::u16string>{u"<h1>"});
    EXPECT_TRUE(configuration.texts(Setting::DedupForumSites).empty());
}

TEST(Configuration, LeavesEmptyFragmentsOut) {
    const Configuration configuration = read(
        {{u"Dedup.forumSite1", u"a.example"}, {u"Dedup.forumSite8", u"b.example"}, {u"Dedup.forumSite9", u"too many"}});
    EXPECT_EQ(configuration.texts(Setting::DedupForumSites), (std::vector<std::u16string>{u"a.example", u"b.example"}));
}

TEST(Configuration, MapsDrivesAndShares) {
    const Configuration configuration =
        read({{u"Drives.D", u"/mnt/d"}, {u"Shares.share2", u"\\\\crawler\\disk|/mnt/crawler"}});
    ASSERT_EQ(configuration.pathMap().drives.size(), 1U);
    EXPECT_EQ(configuration.pathMap().drives[0].windows, u"D");
    EXPECT_EQ(configuration.pathMap().drives[0].folder, u"/mnt/d");
    ASSERT_EQ(configuration.pathMap().shares.size(), 1U);
    EXPECT_EQ(configuration.pathMap().shares[0].windows, u"\\\\crawler\\disk");
    EXPECT_EQ(configuration.pathMap().shares[0].folder, u"/mnt/crawler");
}

struct BadCase {
    const char* name;
    const char16_t* key;
    const char16_t* value;
    const char* told;
};

class ConfigurationRefuses : public testing::TestWithParam<BadCase> {};

TEST_P(ConfigurationRefuses, NamingSectionAndKey) {
    try {
        read({{GetParam().key, GetParam().value}});
        FAIL();
    } catch (const SettingError& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr(GetParam().told));
    }
}

INSTANTIATE_TEST_SUITE_P(Values, ConfigurationRefuses,
                         testing::ValuesIn<BadCase>({
                             {"number", u"Forum.importCid", u"28a", "[Forum] importCid: \"28a\" is not a number"},
                             {"negative", u"Safety.maxDeletePercent", u"-1", "[Safety] maxDeletePercent"},
                             {"encoding", u"Setup.pageEncoding", u"gb18030", "[Setup] pageEncoding: \"gb18030\""},
                             {"share", u"Shares.share1", u"\\\\crawler\\disk", "[Shares] share1"},
                         }),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(Configuration, NamesARequiredSettingThatIsMissing) {
    try {
        Configuration().required(Setting::MergeSiteFragment);
        FAIL();
    } catch (const SettingError& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr("[Merge] siteFragment"));
    }
}

} // namespace
} // namespace kelb::jobs
