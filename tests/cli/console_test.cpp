#include "cli/console_host.h"
#include "cli/progress_line.h"
#include "cli/text_table.h"
#include "platform/interrupt.h"
#include "platform/memory_file_system.h"
#include "platform/random.h"
#include "platform/terminal.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sstream>

namespace kelb::cli {
namespace {

class HandClock final : public platform::Clock {
public:
    double seconds = 100;
    platform::DateTime now() const override { return {2015, 12, 2, 8, 30, 0}; }
    double steadySeconds() const override { return seconds; }
};

TEST(ProgressLine, IsALineEveryFewSecondsAndOneAtTheEnd) {
    HandClock clock;
    std::ostringstream out;
    ProgressLine progress(ProgressLine::Style::Lines, clock, out);
    progress.update(u"已处理: 1", 1, 400);
    EXPECT_EQ(out.str(), "");
    clock.seconds += 4;
    progress.update(u"已处理: 100", 100, 400);
    EXPECT_EQ(out.str(), "100 / 400, 25 rows/s, 0:12 left  已处理: 100\n");
    progress.update(u"已处理: 400", 400, 400);
    progress.finish();
    progress.finish();
    EXPECT_EQ(out.str(), "100 / 400, 25 rows/s, 0:12 left  已处理: 100\n400 / 400, 100 rows/s  已处理: 400\n");
}

TEST(ProgressLine, RewritesItselfAndMakesWay) {
    HandClock clock;
    std::ostringstream out;
    ProgressLine progress(ProgressLine::Style::Rewriting, clock, out);
    progress.update(u"行", 0, 2);
    clock.seconds += 1;
    progress.update(u"行", 1, 2);
    EXPECT_EQ(out.str(), "\r[##########----------] 1 / 2, 1 rows/s, 0:01 left  行\x1B[K");
    progress.clear();
    EXPECT_TRUE(out.str().ends_with("\r\x1B[K"));
    progress.finish();
    EXPECT_TRUE(out.str().ends_with("\x1B[K\n"));
}

TEST(ProgressLine, CanBeOff) {
    HandClock clock;
    std::ostringstream out;
    ProgressLine progress(ProgressLine::Style::Off, clock, out);
    clock.seconds += 10;
    progress.update(u"x", 1, 2);
    progress.finish();
    EXPECT_EQ(out.str(), "");
}

TEST(ConsoleHost, PrintsEntriesAndBoxesOldestFirst) {
    HandClock clock;
    std::ostringstream out, err;
    platform::MemoryFileSystem files;
    platform::SystemRandom random;
    platform::Platform platform{files, clock, random, u"/home"};
    ProgressLine progress(ProgressLine::Style::Off, clock, err);
    jobs::RunLog log(platform, u"");
    const platform::InterruptWatch interrupt;
    ConsoleHost host({out, err, progress, log, interrupt}, {true, u"/lan/"}, false);
    host.log(u"totalRec: 1");
    host.message(u"标题", u"完成!");
    host.warning(u"小心");
    EXPECT_EQ(out.str(), "totalRec: 1\n[标题] 完成!\n");
    EXPECT_EQ(err.str(), "kelb: warning: 小心\n");
    EXPECT_FALSE(host.confirm(u"delete?"));
    EXPECT_FALSE(host.stopRequested());
    std::raise(SIGINT);
    EXPECT_TRUE(host.stopRequested());
}

TEST(TextTable, AlignsWideCharactersAndCutsLongCells) {
    TextTable table;
    table.addColumn(u"名称");
    table.addColumn(u"n", TextTable::Align::Right);
    table.beginRow();
    table.addCell(u"a\r\nb");
    table.addCell(u"7");
    table.beginRow();
    table.addCell(std::u16string(31, u'宽'));
    table.addCell(u"12");
    std::ostringstream out;
    table.write(out);
    std::string wide;
    for (int i = 0; i < 29; ++i) {
        wide += "宽";
    }
    EXPECT_EQ(out.str(), "名称" + std::string(55, ' ') + "   n\n" + std::string(59, '-') + "  --\n" + "a↵b" +
                             std::string(56, ' ') + "   7\n" + wide + "…  12\n");
}

TEST(Terminal, MeasuresText) {
    EXPECT_EQ(platform::displayColumns(u"ab"), 2U);
    EXPECT_EQ(platform::displayColumns(u"洗衣机，ｘ"), 10U);
    EXPECT_EQ(platform::displayColumns(u"e\u0301"), 1U);
    EXPECT_EQ(platform::displayColumns(u"𠮷"), 2U);
    EXPECT_EQ(platform::cutToColumns(u"a洗b", 2), u"a");
    EXPECT_EQ(platform::cutToColumns(u"a洗b", 3), u"a洗");
    EXPECT_EQ(platform::cutToColumns(u"𠮷𠮷", 3), u"𠮷");
}

} // namespace
} // namespace kelb::cli
