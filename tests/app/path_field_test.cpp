#include "app/path_field.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDropEvent>
#include <QFile>
#include <QMimeData>
#include <QTemporaryDir>
#include <QUrl>

namespace kelb::app {
namespace {

class PathFieldDrop : public testing::Test {
protected:
    PathFieldDrop() {
        QFile database(folder.filePath("Comb.mdb"));
        EXPECT_TRUE(database.open(QIODevice::WriteOnly));
    }
    /// What the desktop does: asks while the thing is dragged over the field, then drops it. True when taken.
    bool drop(const QList<QUrl>& urls) {
        QMimeData data;
        data.setUrls(urls);
        QDragEnterEvent enter({5, 5}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&field, &enter);
        QDropEvent event({5, 5}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&field, &event);
        EXPECT_EQ(enter.isAccepted(), event.isAccepted());
        // A move would let the file manager delete the database.
        EXPECT_TRUE(!event.isAccepted() || event.dropAction() == Qt::CopyAction);
        return event.isAccepted();
    }
    QUrl local(const char* name) const { return QUrl::fromLocalFile(folder.filePath(name)); }

    QTemporaryDir folder;
    PathField field;
};

TEST_F(PathFieldDrop, TakesADatabaseFile) {
    EXPECT_TRUE(drop({local("Comb.mdb")}));
    EXPECT_EQ(field.text(), folder.filePath("Comb.mdb"));
}

TEST_F(PathFieldDrop, TakesAFolderWithTheSeparatorAtItsEnd) {
    field.setHolds(PathField::Holds::Folder);
    EXPECT_TRUE(drop({QUrl::fromLocalFile(folder.path())}));
    EXPECT_EQ(field.text(), folder.path() + "/");
}

TEST_F(PathFieldDrop, LeavesWhatItDoesNotHold) {
    field.setText("before");
    EXPECT_FALSE(drop({QUrl::fromLocalFile(folder.path())})) << "a folder where a file belongs";
    EXPECT_FALSE(drop({local("missing.mdb")}));
    EXPECT_FALSE(drop({local("Comb.mdb"), local("Comb.mdb")})) << "two files";
    EXPECT_FALSE(drop({QUrl("http://example.com/Comb.mdb")}));
    field.setHolds(PathField::Holds::Folder);
    EXPECT_FALSE(drop({local("Comb.mdb")}));
    EXPECT_EQ(field.text(), "before");
}

} // namespace
} // namespace kelb::app
