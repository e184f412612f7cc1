#include "store/ClsReadExel.h"
#include "tests/ado/ado_fixture.h"
#include "tests/ado/workbooks.h"

namespace kelb::store {
namespace {

class ReadExel : public ado::testing::AdoFixture {};

TEST_F(ReadExel, OpensTheSheetAsARecordSetOfItsOwn) {
    files.writeFile(u"D:\\型号.xls", ado::testing::workbooks().bytes("formulas.xls"));
    ado::Recordset rows = ClsReadExel(*environment).Read_Excel(u"D:\\型号.xls");
    EXPECT_EQ(rows.cursorLocation, ado::CursorLocation::Client);
    EXPECT_EQ(rows.cursorType, ado::CursorType::Keyset);
    EXPECT_EQ(rows.lockType, ado::LockType::BatchOptimistic);
    EXPECT_EQ(rows.RecordCount(), 8U);
    EXPECT_EQ(rows.text(u"what"), u"number");
    rows.MoveLast();
    EXPECT_EQ(rows.text(u"what"), u"last");
    rows.Close();
    EXPECT_EQ(rows.State(), ado::ObjectState::Closed);
}

TEST_F(ReadExel, ReadsNoWorkbookWhoseSheetIsCalledOtherwise) {
    files.writeFile(u"D:\\other.xls", ado::testing::workbooks().bytes("other.xls"));
    ClsReadExel reader(*environment);
    EXPECT_EQ(ado::testing::errorOf([&] { reader.Read_Excel(u"D:\\other.xls"); }).value().kind,
              ado::Error::Kind::NoSuchTable);
    EXPECT_EQ(reader.Read_Excel(u"D:\\other.xls", u"TABELLE1").text(u"b"), u"2");
}

} // namespace
} // namespace kelb::store
