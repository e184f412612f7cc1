#include "app/reasons_view.h"

#include "app/reasons_chart.h"
#include "tests/app/window_fixture.h"

#include <QComboBox>
#include <QTabWidget>
#include <QTableView>

namespace kelb::app {
namespace {

jobs::JobSummary someSummary() {
    jobs::JobSummary summary("forum-import");
    summary.rows = 6;
    summary.source = {u"C:\\Comb.mdb", u"bbsforum", u"url"};
    summary.skip("overLong", u"http://b/1");
    summary.fail("noTitle", u"http://b/2", u"未找到SM");
    summary.save(u"http://b/3");
    summary.fail("noFloors", u"http://b/4", u"");
    summary.fail("noFloors", u"http://b/5", u"");
    summary.save(u"http://b/6");
    return summary;
}

TEST(ReasonsView, OpensTheRowsBehindABar) {
    std::vector<std::u16string> opened;
    ReasonsView view([&](const jobs::RowPlace& place, const jobs::VisitedRow& row) {
        EXPECT_EQ(place.table, u"bbsforum");
        opened.push_back(row.name);
    });
    view.resize(900, 700);
    static_cast<QWidget&>(view).show();
    view.show(someSummary(), "six");
    auto& bar = *view.findChild<QComboBox*>("ReasonsBar");
    auto& rows = *view.findChild<QTableView*>("ReasonsRows");
    const auto name = [&](int row) { return rows.model()->index(row, 0).data().toString(); };
    ASSERT_EQ(bar.count(), 4);
    EXPECT_EQ(bar.itemText(0), "保存 2");
    EXPECT_EQ(bar.itemText(1), "跳过：过长 1");
    EXPECT_EQ(bar.itemText(2), "失败：页面上没有楼层 2");
    EXPECT_EQ(bar.currentIndex(), 2) << "what failed most is shown first";
    EXPECT_EQ(name(1), "http://b/5");

    bar.setCurrentIndex(3);
    ASSERT_EQ(rows.model()->rowCount(), 1);
    EXPECT_EQ(rows.model()->index(0, 1).data().toString(), "未找到SM");
    emit rows.activated(rows.model()->index(0, 0));
    EXPECT_EQ(opened, std::vector<std::u16string>{u"http://b/2"});

    // Right of the shortest bar, and still in its line.
    auto& chart = *view.findChild<ReasonsChart*>("ReasonsChart");
    QTest::qWait(20);
    const QRectF plot = chart.chart()->plotArea();
    const auto click = [&](double line) {
        QTest::mouseClick(chart.viewport(), Qt::LeftButton, {},
                          chart.mapFromScene(QPointF(plot.right() - 2, plot.top() + plot.height() * line)));
    };
    click(0.375);
    EXPECT_EQ(bar.currentIndex(), 1);
    click(0.125);
    EXPECT_EQ(bar.currentIndex(), 0);

    view.show(jobs::JobSummary("add-fields"), "none");
    EXPECT_EQ(bar.count(), 0);
    EXPECT_EQ(rows.model()->rowCount(), 0);
    click(0.5);
}

class ReasonsTab : public WindowFixture {};

TEST_F(ReasonsTab, HoldsTheLastJobAlsoWhenItEndsWithAnError) {
    openWindow("Command1", [](const JobRequest&, jobs::JobHost&, jobs::JobSummary& summary) {
        summary = someSummary();
        throw std::runtime_error("the disk is full");
    });
    click("Command1");
    EXPECT_EQ(find<QComboBox>("ReasonsBar").count(), 4);
    EXPECT_TRUE(find<QLabel>("ReasonsText").text().contains("保存 2"));
}

} // namespace
} // namespace kelb::app
