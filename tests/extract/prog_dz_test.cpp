#include "extract/Prog_Dz.h"
#include "extract/user_names.h"
#include "platform/code_page.h"
#include "platform/memory_file_system.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace kelb::extract {
namespace {

using Prog_Dz::LanMode;

TEST(LocalPagePath, PutsTheStoredPathStraightBehindTheFolder) {
    EXPECT_EQ(Prog_Dz::localPagePath(LanMode::On, u"\\\\pc\\d\\", u"  D:\\p\\1.htm "), u"\\\\pc\\d\\p\\1.htm");
    EXPECT_EQ(Prog_Dz::localPagePath(LanMode::On, u"/srv", u"D:\\p"), u"/srvp") << "no separator is added";
    EXPECT_EQ(Prog_Dz::localPagePath(LanMode::On, u"/srv/", u"D:"), u"/srv/");
    EXPECT_EQ(Prog_Dz::localPagePath(LanMode::On, u"/srv/", u""), u"/srv/");
    EXPECT_EQ(Prog_Dz::localPagePath(LanMode::Off, u"/srv/", u"D:\\p"), u"");
}

TEST(ExtTitleTag, FindsTheElementInAnyCase) {
    EXPECT_EQ(Prog_Dz::extTitleTag(u"</title><TITLE>长虹 Ch </tItLe></title>"), u"长虹 Ch ");
    EXPECT_EQ(Prog_Dz::extTitleTag(u"<title></title>"), u"");
    EXPECT_EQ(Prog_Dz::extTitleTag(u"<title>a"), u"");
    EXPECT_EQ(Prog_Dz::extTitleTag(u"<title x>a</title>"), u"");
}

class FixedRandom final : public platform::Random {
public:
    explicit FixedRandom(double next) : next_(next) {}
    void reseed() override { ++reseeded; }
    double next() override { return next_; }
    std::uint64_t bits() override { return 0; }
    int reseeded = 0;

private:
    double next_;
};

TEST(GiveRndName, NeverDrawsTheLastName) {
    FixedRandom lowest(0.0), highest(0.999999);
    const UserNames names({u"甲", u"乙", u"丙"});
    EXPECT_EQ(names.giveRndName(lowest), u"甲");
    EXPECT_EQ(names.giveRndName(highest), u"乙");
    EXPECT_EQ(highest.reseeded, 1) << "seeded anew for each name";
    EXPECT_EQ(UserNames({u"甲"}).giveRndName(highest), u"甲");
    EXPECT_THROW((void)UserNames().giveRndName(highest), std::out_of_range);
}

TEST(UserNamesFile, IsSplitAtBars) {
    platform::MemoryFileSystem files;
    EXPECT_THROW((void)UserNames::read(files, u"/app"), platform::FileError);
    files.writeFile(u"/app/userNames.txt", platform::encode936(u"甲| 乙\r\n||"));
    EXPECT_EQ(UserNames::read(files, u"/app").all(), (std::vector<std::u16string>{u"甲", u" 乙\r\n", u"", u""}));
}

} // namespace
} // namespace kelb::extract
