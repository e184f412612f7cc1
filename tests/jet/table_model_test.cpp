#include "jet/database.h"
#include "jet/error.h"
#include "jet/index_tree.h"

#include "platform/date_time.h"

#include "tests/jet/database_fixture.h"
#include "tests/platform/temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <compare>
#include <cstdio>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <unordered_map>

namespace kelb::jet {
namespace {

using namespace testing;

#if defined(__SANITIZE_ADDRESS__) || defined(_WIN32) // the whole number takes seven minutes under Wine
constexpr int kOperations = 8'000;
#else
constexpr int kOperations = 100'000;
#endif
constexpr int kPhase = kOperations / 8;  ///< operations while the table grows, and while it shrinks
constexpr int kBatch = kOperations / 12; ///< operations between two looks at everything

enum Columns : std::size_t { kId, kUrl, kReference, kNumber, kFlag, kDate, kContent, kNote, kPicture, kColumns };
using Values = std::array<Value, kColumns>;

struct WalkedIndex {
    NewIndex index;
    std::vector<std::pair<Columns, bool>> parts; ///< column, ascending
};
const std::vector<WalkedIndex>& indexes() {
    static const std::vector<WalkedIndex> all{
        {{.name = u"PrimaryKey", .columns = {{u"id"}}, .primary = true}, {{kId, true}}},
        {{.name = u"urlidx", .columns = {{u"url"}}, .unique = true}, {{kUrl, true}}},
        {{.name = u"numidx", .columns = {{u"num", false}}}, {{kNumber, false}}},
        {{.name = u"dateidx", .columns = {{u"recTime"}, {u"num"}}}, {{kDate, true}, {kNumber, true}}},
        {{.name = u"flagidx", .columns = {{u"flag"}, {u"recTime", false}}}, {{kFlag, true}, {kDate, false}}},
        {{.name = u"ref", .columns = {{u"refurl"}}, .ignoreNulls = true}, {{kReference, true}}},
    };
    return all;
}

/// In the order of an index: Null first, yes before no; texts of small letters and digits as their units. Other texts
/// are not compared: their order is that of a table, which index_key_test knows.
std::partial_ordering order(const Value& a, const Value& b) {
    if (isNull(a) || isNull(b))
        return isNull(b) <=> isNull(a);
    if (const auto* text = std::get_if<std::u16string>(&a)) {
        const auto& other = std::get<std::u16string>(b);
        const auto plain = [](char16_t unit) { return unit < 0x80; };
        if (!std::all_of(text->begin(), text->end(), plain) || !std::all_of(other.begin(), other.end(), plain))
            return std::partial_ordering::unordered;
        return *text <=> other;
    }
    if (const auto* date = std::get_if<OleDate>(&a))
        return date->days <=> std::get<OleDate>(b).days;
    if (const auto* flag = std::get_if<bool>(&a))
        return std::get<bool>(b) <=> *flag;
    return std::get<std::int32_t>(a) <=> std::get<std::int32_t>(b);
}

/// The same random changes to a table and to a map; both must always hold the same rows.
class Model {
public:
    explicit Model(std::uint64_t seed) : random_(seed), database_(machine_.create()) {
        NewTable table{.name = u"wxAll",
                       .columns = {{.name = u"id", .type = ColumnType::Long, .autonumber = true},
                                   {.name = u"url"},
                                   {.name = u"refurl"},
                                   {.name = u"num", .type = ColumnType::Long},
                                   {.name = u"flag", .type = ColumnType::YesNo},
                                   {.name = u"recTime", .type = ColumnType::DateTime},
                                   {.name = u"content", .type = ColumnType::Memo},
                                   {.name = u"note", .type = ColumnType::Memo, .compressed = true},
                                   {.name = u"picture", .type = ColumnType::Ole}},
                       .indexes = {}};
        for (const WalkedIndex& each : indexes())
            table.indexes.push_back(each.index);
        database_->createTable(table);
    }

    /// One of every kind of operation; the table mostly grows, or mostly shrinks.
    void step(bool grows) {
        const std::uint64_t what = random_() % 100;
        if (rows_.empty() || what < (grows ? 50U : 15U))
            insert();
        else if (what < 75)
            update();
        else if (what < (grows ? 80U : 97U))
            erase();
        else
            lookUp();
        if (random_() % 150 == 0)
            database_->commit();
        if (random_() % 1500 == 0)
            reopen();
    }
    void eraseAll() {
        while (!rows_.empty())
            erase();
    }
    void reopen() {
        database_->commit();
        database_.reset();
        database_ = machine_.open();
    }
    std::string differences() {
        std::string text = faultsOf(*database_);
        std::size_t seen = 0;
        Row row;
        for (TableScan scan = table().scan(); scan.next(row); ++seen)
            text += compare(row);
        for (const auto& [id, values] : rows_)
            text += table().read(id, row) ? compare(row) : "a row is not found by its address\n";
        for (const WalkedIndex& each : indexes())
            text += walk(each);
        return text + (seen == rows_.size() && table().rowCount() == seen ? "" : "other number of rows\n");
    }
    /// The rows as mdb-export writes them, sorted; and as it does write them.
    [[maybe_unused]] std::multiset<std::string> exported() const;
    std::multiset<std::string> exportedByMdbtools();

    std::size_t rowCount() const { return rows_.size(); }
    std::size_t usedPages() {
        std::size_t pages = 0;
        const TableDefinition& definition = table().definition();
        std::vector<RowId> maps = {definition.ownedMap, definition.freeMap};
        for (const ColumnMaps& each : definition.longValueMaps)
            maps.insert(maps.end(), {each.owned, each.free});
        for (const RowId map : maps)
            pages += UsageMap(database_->pager(), map).count();
        return pages;
    }

private:
    Table& table() { return database_->table(u"wxAll"); }
    std::size_t physical(std::u16string_view name) {
        for (const LogicalIndex& logical : table().definition().logicalIndexes)
            if (logical.name == name)
                return logical.physical;
        throw std::out_of_range("no such index");
    }

    Value randomText(std::initializer_list<std::size_t> lengths) {
        if (random_() % 8 == 0)
            return Null{};
        std::u16string text(*(lengths.begin() + random_() % lengths.size()), u' ');
        const bool western = random_() % 2 == 0;
        const std::size_t drawn = std::min<std::size_t>(text.size(), 40);
        for (std::size_t i = 0; i < drawn; ++i)
            text[i] = static_cast<char16_t>(western ? u'a' + random_() % 26 : 0x4E01 + random_() % 200);
        std::fill(text.begin() + static_cast<std::ptrdiff_t>(drawn), text.end(), western ? u'z' : u'中');
        return text;
    }
    Value randomUrl() {
        if (!urls_.empty() && random_() % 20 == 0) // one that is there
            return rows_.at(anyRow())[kUrl];
        std::u16string url = u"http";
        for (std::size_t length = 3 + random_() % (random_() % 4 == 0 ? 200 : 10); length > 0; --length)
            url.push_back(static_cast<char16_t>(u'a' + random_() % 26));
        return url;
    }
    Value randomValue(std::size_t column) {
        switch (column) {
        case kId:
            return Null{}; // the next number
        case kUrl:
            return randomUrl();
        case kReference:
            return randomText({0, 5, 60, 255});
        case kNumber:
            return random_() % 9 == 0 ? Value(Null{}) : Value(static_cast<std::int32_t>(random_() % 4000) - 2000);
        case kFlag:
            return random_() % 2 == 0;
        case kDate:
            return random_() % 9 == 0 ? Value(Null{}) : Value(OleDate{42000.0 + static_cast<double>(random_() % 1000)});
        case kContent:
        case kNote:
            return randomText({1, 2, 3, 32, 33, 62, 63, 100, 200, 400, 1500, 2038, 2039, 5000, 12000});
        default:
            return random_() % 2 == 0 ? Value(Null{})
                                      : Value(Binary(random_() % 9000, static_cast<std::byte>(random_())));
        }
    }
    /// The next row from a random place on.
    RowId anyRow() {
        const auto last = rows_.rbegin()->first;
        const auto found = rows_.lower_bound({PageNumber{static_cast<std::uint32_t>(random_() % (raw(last.page) + 1))},
                                              static_cast<std::uint8_t>(random_())});
        return found == rows_.end() ? rows_.begin()->first : found->first;
    }
    /// As the unique index compares: by key, where case does not count; the values here are lower case.
    bool urlTaken(const Value& url, std::optional<RowId> except) const {
        const auto found = urls_.find(std::get<std::u16string>(url));
        return found != urls_.end() && found->second != except;
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
    static std::optional<std::int32_t> numberOf(const Values& values) {
        const auto* number = std::get_if<std::int32_t>(&values[kNumber]);
        return number == nullptr ? std::nullopt : std::optional(*number);
    }
    void enter(RowId id, const Values& values) {
        rows_[id] = values;
        urls_[std::get<std::u16string>(values[kUrl])] = id;
        numbers_[numberOf(values)].insert(id);
    }
    void leave(RowId id) {
        const auto row = rows_.find(id);
        urls_.erase(std::get<std::u16string>(row->second[kUrl]));
        numbers_[numberOf(row->second)].erase(id);
        rows_.erase(row);
    }

    void insert() {
        Values values;
        for (std::size_t i = 0; i < kColumns; ++i)
            values[i] = randomValue(i);
        RowId id;
        if (refusesDuplicate(urlTaken(values[kUrl], std::nullopt), [&] { id = table().insert(values); }))
            return;
        values[kId] = ++autonumber_;
        ASSERT_FALSE(rows_.contains(id)) << "an address is given twice";
        enter(id, values);
    }
    void update() {
        const RowId id = anyRow();
        Values values = rows_.at(id);
        std::vector<Change> changes;
        for (std::size_t i = 1; i < kColumns; ++i)
            if (random_() % 3 == 0)
                changes.push_back({i, values[i] = randomValue(i)});
        if (refusesDuplicate(urlTaken(values[kUrl], id), [&] { table().update(id, changes); }))
            return;
        leave(id);
        enter(id, values);
    }
    void erase() {
        const RowId id = anyRow();
        table().erase(id);
        leave(id);
        Row row;
        EXPECT_FALSE(table().read(id, row));
        EXPECT_THROW(table().erase(id), Error);
    }
    void lookUp() {
        const auto& [id, values] = *rows_.find(anyRow());
        EXPECT_EQ(table().lookUp(physical(u"PrimaryKey"), values[kId]), std::vector{id});
        EXPECT_EQ(table().lookUp(physical(u"urlidx"), values[kUrl]), std::vector{id});
        EXPECT_TRUE(table().lookUp(physical(u"urlidx"), u"nothing").empty());
        const std::set<RowId>& same = numbers_.at(numberOf(values)); // in row order, as the look-up gives them
        EXPECT_EQ(table().lookUp(physical(u"numidx"), values[kNumber]), std::vector(same.begin(), same.end()));
    }
    std::string compare(const Row& row) {
        const auto expected = rows_.find(row.id());
        if (expected == rows_.end())
            return "a row that should not be there\n";
        std::string text;
        for (std::size_t i = 0; i < kColumns; ++i) {
            const Column& each = table().definition().columns[i];
            const bool same = row.value(each) == expected->second[i] && row.isNull(each) == isNull(expected->second[i]);
            text += same ? "" : "column " + std::to_string(i) + " differs\n";
        }
        return text;
    }
    /// From the first entry to the last one: each row once, in the order of its values.
    std::string walk(const WalkedIndex& walked) {
        const TableDefinition& definition = table().definition();
        const PhysicalIndex& index = definition.physicalIndexes[physical(walked.index.name)];
        const std::string name = platform::toUtf8(walked.index.name);
        std::size_t entered = 0, seen = 0;
        for (const auto& [id, values] : rows_)
            entered += walked.index.ignoreNulls && isNull(values[walked.parts[0].first]) ? 0U : 1U;
        const Values* before = nullptr;
        std::set<RowId> rows;
        for (auto at =
                 IndexTree(database_->pager(), database_->allocator(), {index.root, index.ownedMap, definition.page})
                     .begin();
             at.valid(); at.next(), ++seen) {
            const auto found = rows_.find(at.row());
            if (found == rows_.end() || !rows.insert(at.row()).second)
                return name + " leads to a row that is not there, or twice to one\n";
            auto placed = std::partial_ordering::less;
            if (before != nullptr) {
                placed = std::partial_ordering::equivalent;
                for (const auto& [column, ascending] : walked.parts)
                    if (placed == std::partial_ordering::equivalent)
                        placed = ascending ? order((*before)[column], found->second[column])
                                           : order(found->second[column], (*before)[column]);
            }
            if (placed == std::partial_ordering::greater)
                return name + " is out of order\n";
            before = &found->second;
        }
        return seen == entered
                   ? ""
                   : name + " has " + std::to_string(seen) + " entries, not " + std::to_string(entered) + "\n";
    }

    std::mt19937_64 random_;
    Machine machine_;
    std::unique_ptr<Database> database_;
    std::map<RowId, Values> rows_;
    std::unordered_map<std::u16string, RowId> urls_;
    std::map<std::optional<std::int32_t>, std::set<RowId>> numbers_; ///< rows by "num"
    std::int32_t autonumber_ = 0;
};

std::multiset<std::string> Model::exported() const {
    std::multiset<std::string> lines;
    for (const auto& row : rows_) {
        std::string line;
        for (std::size_t i = 0; i < kPicture; ++i) {
            const Value& value = row.second[i];
            if (const auto* date = std::get_if<OleDate>(&value)) {
                const platform::DateTime time = platform::fromSerial(date->days).value();
                std::array<char, 32> shown{};
                std::snprintf(shown.data(), shown.size(), "%04d-%02d-%02d", time.year, time.month, time.day);
                line += shown.data();
            } else if (const auto* number = std::get_if<std::int32_t>(&value)) {
                line += std::to_string(*number);
            } else if (const auto* flag = std::get_if<bool>(&value)) {
                line += *flag ? "1" : "0";
            } else if (const auto* units = std::get_if<std::u16string>(&value)) {
                line += platform::toUtf8(*units);
            }
            line += "|";
        }
        lines.insert(line);
    }
    return lines;
}

#ifndef _WIN32
std::multiset<std::string> Model::exportedByMdbtools() {
    database_->commit();
    const platform::TemporaryFolder folder;
    const std::string file = (folder.native() / "model.mdb").string();
    std::ofstream(file, std::ios::binary) << machine_.files.readFile(kPath);
    const std::string command = "mdb-export -H -Q -d '|' -D %Y-%m-%d -T %Y-%m-%d -b strip '" + file + "' wxAll";
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::string text;
    std::array<char, 65536> buffer{};
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), pipe.get()))
        text.append(buffer.data(), count);
    std::multiset<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.insert(line);
    return lines;
}
#endif

TEST(TableModel, RandomChangesAgreeWithAMapAndWithAnotherReader) {
    const std::uint64_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    Model model(seed);
    for (int i = 0; i < kOperations; ++i) {
        model.step(i / kPhase % 2 == 0);
        if (i % kBatch == kBatch - 1) {
            ASSERT_EQ(model.differences(), "") << "after operation " << i;
        }
#ifndef _WIN32 // mdbtools are programs of Debian's
        if (i == 3 * kPhase - 1) {
            const auto expected = model.exported(), given = model.exportedByMdbtools();
            ASSERT_GT(expected.size(), 100U);
            std::vector<std::string> one;
            std::set_symmetric_difference(expected.begin(), expected.end(), given.begin(), given.end(),
                                          std::back_inserter(one));
            ASSERT_TRUE(one.empty()) << one.size()
                                     << " rows differ in mdb-export, the first: " << one[0].substr(0, 200);
        }
#endif
    }
    model.reopen();
    ASSERT_EQ(model.differences(), "") << "after opening it again";
    model.eraseAll();
    ASSERT_EQ(model.differences(), "");
    EXPECT_EQ(model.usedPages(), 0U) << "pages are kept by a table without rows";
}

} // namespace
} // namespace kelb::jet
