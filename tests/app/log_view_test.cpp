#include "app/log_view.h"

#include <gtest/gtest.h>

#include <QScrollBar>
#include <QTest>
#include <QTextBlock>

#include <string>

namespace kelb::app {
namespace {

std::u16string numbered(int number) {
    const std::string digits = std::to_string(number);
    return {digits.begin(), digits.end()};
}

TEST(LogView, ShowsEntriesTogetherAndNotAtOnce) {
    LogView view;
    view.add(u"1");
    view.add(u"2");
    EXPECT_EQ(view.toPlainText(), "") << "every entry is painted on its own";
    EXPECT_TRUE(QTest::qWaitFor([&] { return view.toPlainText() == "2\n1\n"; }, 2'000));
    view.add(u"3");
    view.flush();
    EXPECT_EQ(view.toPlainText(), "3\n2\n1\n");
}

TEST(LogView, KeepsEverythingAndShowsTheNewestLines) {
    LogView view;
    for (int i = 1; i <= 5'000; ++i) {
        view.add(numbered(i));
        if (i % 1'700 == 0) {
            view.flush(); // some pieces longer than what is left of the view, some shorter
        }
    }
    view.flush();
    EXPECT_EQ(view.document()->firstBlock().text(), "5000");
    EXPECT_EQ(view.document()->findBlockByNumber(1'999).text(), "3001");
    EXPECT_LE(view.blockCount(), 2'001);
    EXPECT_EQ(view.entryCount(), 5'000U);
    EXPECT_EQ(view.wholeText().substr(0, 12), u"5000\r\n4999\r\n");
    EXPECT_TRUE(view.wholeText().ends_with(u"\r\n2\r\n1\r\n"));
}

TEST(LogView, CountsTheLinesOfAnEntry) {
    LogView view;
    for (int i = 1; i <= 900; ++i) {
        view.add(u"O: kill a\r\nN: b\r\n" + numbered(i)); // three lines each
    }
    view.flush();
    EXPECT_LE(view.blockCount(), 2'004);
    EXPECT_EQ(view.document()->findBlockByNumber(2).text(), "900");
}

TEST(LogView, ShowsTheFrontOfAHugeEntryOnly) {
    LogView view;
    view.add(std::u16string(5'000'000, u'字'));
    view.flush();
    EXPECT_LT(view.toPlainText().size(), 20'000);
    EXPECT_EQ(view.entry(0).size(), 5'000'000U);
}

TEST(LogView, LeavesTheLinesThatAreBeingRead) {
    LogView view;
    view.resize(300, 200);
    view.show();
    for (int i = 1; i <= 200; ++i) {
        view.add(numbered(i));
    }
    view.flush();
    EXPECT_EQ(view.verticalScrollBar()->value(), 0) << "the newest entry is in sight";
    view.verticalScrollBar()->setValue(50);
    const int read = view.cursorForPosition({5, 5}).block().text().toInt();
    view.add(u"a\nb");
    view.add(u"c");
    view.flush();
    EXPECT_EQ(view.cursorForPosition({5, 5}).block().text().toInt(), read);
}

TEST(LogView, StartsAnewWhenCleared) {
    LogView view;
    view.add(u"old");
    view.clearEntries();
    view.add(u"new");
    view.flush();
    EXPECT_EQ(view.toPlainText(), "new\n");
    EXPECT_EQ(view.wholeText(), u"new\r\n");
}

} // namespace
} // namespace kelb::app
