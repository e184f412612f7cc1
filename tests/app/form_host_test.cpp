#include "jobs/job_error.h"
#include "tests/app/window_fixture.h"

#include <QLabel>
#include <QPushButton>

namespace kelb::app {
namespace {

/// What jobs that clean up ask of the window.
class FormHost : public WindowFixture {};

TEST_F(FormHost, AJobMayChangeTheCaptionOfItsButton) {
    openWindow("Command11",
               [](const JobRequest&, jobs::JobHost& host, jobs::JobSummary&) { host.setCaption(u"完成"); });
    const QString other = find<QPushButton>("Command16").text();
    click("Command11");
    EXPECT_EQ(find<QPushButton>("Command11").text(), "完成");
    EXPECT_EQ(find<QPushButton>("Command16").text(), other);
}

TEST_F(FormHost, AJobMayCloseTheWindowAndRunsOn) {
    bool hidden = false;
    openWindow("Command10", [&](const JobRequest&, jobs::JobHost& host, jobs::JobSummary&) {
        host.closeWindow();
        hidden = !form->isVisible();
        host.yield();
        EXPECT_FALSE(host.stopRequested());
        host.message(u"t", u"0003");
    });
    click("Command10");
    EXPECT_TRUE(hidden);
    EXPECT_FALSE(form->isVisible());
    EXPECT_FALSE(form->jobRuns());
    ASSERT_EQ(dialogs.messages.size(), 1U);
}

TEST_F(FormHost, WhatTheUserRefusedIsNoError) {
    openWindow("Command11", [](const JobRequest&, jobs::JobHost& host, jobs::JobSummary&) {
        if (!host.confirm(u"10 条记录中有 9 条没有页面文件")) {
            throw jobs::Refused("nothing was done");
        }
    });
    click("Command11");
    ASSERT_EQ(dialogs.questions.size(), 1U);
    EXPECT_EQ(dialogs.questions[0].text, "10 条记录中有 9 条没有页面文件");
    EXPECT_TRUE(dialogs.errors.empty());
    EXPECT_TRUE(statusLine().contains("已取消"));
    EXPECT_EQ(logText(), u"已取消，什么都没有改变。\r\n");
}

} // namespace
} // namespace kelb::app
