#include "jet/error.h"

#include "tests/jet/table_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace kelb::jet {
namespace {

using testing::autonumber;
using testing::column;
using testing::TableFixture;

/// The same random changes to a table and to a map; both must always hold the same rows.
class Model {
public:
    explicit Model(std::uint64_t seed) : random_(seed) {
        std::vector<Column> columns = {autonumber(u"id"),
                                       column(u"url", ColumnType::Text),
                                       column(u"refurl", ColumnType::Text),
                                       column(u"content", ColumnType::Memo),
                                       column(u"note", ColumnType::Memo),
                                       column(u"sA", ColumnType::YesNo),
                                       column(u"recTime", ColumnType::DateTime),
                                       column(u"picture", ColumnType::Ole)};
        columns[4].extraFlags = 1;
        f.make(u"wxAll", columns,
               {{u"PrimaryKey", {u"id"}, 0x89}, {u"urlidx", {u"url"}, 0x81}, {u"ref", {u"refurl", u"sA"}, 0x82}});
    }

    void step() {
        const std::uint64_t what = random_() % 100;
        if (rows_.empty() || what < 45) {
            insert();
        } else if (what < 85) {
            update();
        } else {
            erase();
        }
    }
    void eraseAll() {
        while (!rows_.empty())
            erase();
    }
    std::string differences() {
        std::string text = f.faults();
        std::size_t seen = 0;
        Row row;
        for (TableScan scan = f.table->scan(); scan.next(row); ++seen)
            text += compare(row);
        for (const auto& [id, values] : rows_)
            text += f.table->read(id, row) ? compare(row) : "a row is not found by its id\n";
        return text + (seen == rows_.size() ? "" : "other number of rows\n");
    }

    TableFixture f;

private:
    using Values = std::vector<Value>;

    Value randomText(std::initializer_list<std::size_t> lengths) {
        if (random_() % 8 == 0)
            return Null{};
        const std::size_t length = *(lengths.begin() + random_() % lengths.size());
        const bool western = random_() % 2 == 0;
        std::u16string text(length, u' ');
        for (char16_t& unit : text)
            unit = static_cast<char16_t>(western ? u'a' + random_() % 26 : 0x4E01 + random_() % 200);
        return text;
    }
    Value randomValue(std::size_t column) {
        switch (column) {
        case 0:
            return Null{}; // the next number
        case 1:
            return u"http://a.b/" + std::u16string(1, static_cast<char16_t>(u'a' + random_() % 26)) +
                   std::u16string(random_() % 200, static_cast<char16_t>(u'a' + random_() % 26));
        case 2:
            return randomText({0, 5, 60, 255});
        case 3:
        case 4:
            return randomText({0, 2, 3, 32, 33, 62, 63, 400, 1500, 2038, 2039, 5000, 12000});
        case 5:
            return random_() % 2 == 0;
        case 6:
            return OleDate{42000.0 + static_cast<double>(random_() % 1000)};
        default:
            return random_() % 2 == 0 ? Value(Null{})
                                      : Value(Binary(random_() % 9000, static_cast<std::byte>(random_())));
        }
    }
    RowId anyRow() {
        auto row = rows_.begin();
        std::advance(row, static_cast<std::ptrdiff_t>(random_() % rows_.size()));
        return row->first;
    }
    /// As the unique index compares: by key, where case does not count; the values here are lower case.
    bool urlTaken(const Value& url, std::optional<RowId> except) const {
        return std::ranges::any_of(rows_, [&](const auto& row) { return row.first != except && row.second[1] == url; });
    }
    template <class Operation>
    bool refusesDuplicate(bool duplicate, Operation operation) {
        try {
            operation();
        } catch (const Error& e) {
            EXPECT_EQ(e.kind(), Error::Kind::DuplicateKey) << e.what();
            EXPECT_TRUE(duplicate);
            return true;
        }
        EXPECT_FALSE(duplicate);
        return false;
    }

    void insert() {
        Values values;
        for (std::size_t i = 0; i < 8; ++i)
            values.push_back(randomValue(i));
        RowId id;
        if (refusesDuplicate(urlTaken(values[1], std::nullopt), [&] { id = f.table->insert(values); }))
            return;
        values[0] = ++autonumber_;
        ASSERT_TRUE(rows_.emplace(id, values).second) << "an address is given twice";
    }
    void update() {
        const RowId id = anyRow();
        Values values = rows_[id];
        std::vector<Change> changes;
        for (std::size_t i = 1; i < 8; ++i)
            if (random_() % 3 == 0)
                changes.push_back({i, values[i] = randomValue(i)});
        if (!refusesDuplicate(urlTaken(values[1], id), [&] { f.table->update(id, changes); }))
            rows_[id] = values;
    }
    void erase() {
        const RowId id = anyRow();
        f.table->erase(id);
        rows_.erase(id);
        Row row;
        EXPECT_FALSE(f.table->read(id, row));
        EXPECT_THROW(f.table->erase(id), Error);
    }
    std::string compare(const Row& row) {
        const auto expected = rows_.find(row.id());
        if (expected == rows_.end())
            return "a row that should not be there\n";
        std::string text;
        for (std::size_t i = 0; i < 8; ++i) {
            const Column& each = f.table->definition().columns[i];
            const bool same = row.value(each) == expected->second[i] && row.isNull(each) == isNull(expected->second[i]);
            text += same ? "" : "column " + std::to_string(i) + " differs\n";
        }
        return text;
    }

    std::mt19937_64 random_;
    std::map<RowId, Values> rows_;
    std::int32_t autonumber_ = 0;
};

TEST(TableModel, RandomChangesAgreeWithAMap) {
    const std::uint64_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    Model model(seed);
    for (int batch = 0; batch < 12; ++batch) {
        for (int i = 0; i < 60; ++i)
            model.step();
        ASSERT_EQ(model.differences(), "") << "after batch " << batch;
    }
    model.f.reopen();
    ASSERT_EQ(model.differences(), "") << "after opening it again";
    model.eraseAll();
    ASSERT_EQ(model.differences(), "");
    const TableDefinition& table = model.f.table->definition();
    std::vector<RowId> maps = {table.ownedMap, table.freeMap};
    for (const ColumnMaps& each : table.longValueMaps)
        maps.insert(maps.end(), {each.owned, each.free});
    for (const RowId map : maps)
        EXPECT_EQ(UsageMap(*model.f.pager, map).count(), 0U) << "pages are kept by a table without rows";
}

} // namespace
} // namespace kelb::jet
