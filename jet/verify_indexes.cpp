#include "jet/verify_table.h"

#include "jet/index_check.h"
#include "jet/text_keys.h"

#include <algorithm>
#include <functional>
#include <string_view>

namespace kelb::jet {
namespace {

/// Of a key and its row; sums of these compare two sets of entries without keeping either.
std::uint64_t fingerprint(std::span<const std::byte> key, RowId row) {
    const std::string_view bytes(reinterpret_cast<const char*>(key.data()), key.size());
    std::uint64_t mixed = std::hash<std::string_view>{}(bytes) ^ std::uint64_t{row.packed()} * 0x9E3779B97F4A7C15U;
    mixed ^= mixed >> 32;
    mixed *= 0xD6E8FEB86659FD93U;
    return mixed ^ mixed >> 32;
}

/// The key as a known program makes it that takes ß, Æ and Þ for one letter.
KeyBytes foreignKey(const TableDefinition& table, const PhysicalIndex& index, const IndexChecks::ValueOf& valueOf) {
    KeyBytes key;
    for (const IndexColumn& part : index.columns) {
        const Column& column = *table.columnByNumber(part.column);
        const Value& value = valueOf(column);
        const std::size_t start = key.size();
        appendKey(key, column, part.ascending, value);
        if (const auto* const text = std::get_if<std::u16string>(&value)) {
            key.resize(start + 1); // the flag byte stays
            static_cast<void>(appendTextKey(key, *text, part.ascending, textKeysOf(column), TwoLetterPlaces::One));
        }
    }
    return key;
}

} // namespace

IndexChecks::IndexChecks(Verification& verification, const TableDefinition& table, const PageGroup& rows)
    : v_(verification), table_(table), rows_(rows) {
    const RowSet none(v_, rows);
    for (std::size_t i = 0; i < table.physicalIndexes.size(); ++i)
        trees_.push_back({i, tableLabel(table) + ", index \"" + indexName(table, i) + "\"", none, none, none});
}

/// ACE makes keys of decimals by another rule.
bool IndexChecks::makesKeys(const PhysicalIndex& index) const {
    return table_.dialect != Dialect::Ace || std::ranges::none_of(index.columns, [this](const IndexColumn& part) {
               return table_.columnByNumber(part.column)->type == ColumnType::Numeric;
           });
}

void IndexChecks::addRow(RowId row, const ValueOf& valueOf) {
    for (Tree& tree : trees_) {
        const PhysicalIndex& index = table_.physicalIndexes[tree.physical];
        if (!makesKeys(index)) {
            tree.keyless.add(row);
            continue;
        }
        try {
            const RowKey key = makeRowKey(table_, tree.physical, valueOf);
            if (key.anyNull && index.required())
                v_.error(row, tree.name + ": the index allows no Null, this row has one");
            (key.isEntered(index) ? tree.known : tree.leftOut).add(row);
            if (key.isEntered(index))
                tree.keySum += fingerprint(key.bytes, row);
        } catch (const Error& refused) {
            if (refused.kind() != Error::Kind::KeyNotPossible)
                throw;
            tree.keyless.add(row);
        }
    }
}

/// One tree against the rows of its table.
class IndexChecks::Walk final : public IndexVisitor {
public:
    Walk(Verification& verification, const TableDefinition& table, Tree& tree, const RowSet& live, RowSet none)
        : v_(verification), index_(table.physicalIndexes[tree.physical]), tree_(tree), live_(live),
          seen_(std::move(none)), owner_(v_.newOwner(tree.name)) {
        for (const IndexColumn& part : index_.columns)
            allNull_.push_back(part.ascending ? std::byte{0x00} : std::byte{0xFF});
    }

    bool enter(PageNumber page) override { return v_.claim(page, owner_); }

    void entry(std::span<const std::byte> key, RowId row, PageNumber leaf) override {
        const bool equal = started_ && std::ranges::equal(key, last_);
        if (!equal)
            ++distinct_;
        else if (index_.unique() && !std::ranges::equal(key, allNull_))
            error(leaf, "the index is unique, yet " + address(row) + " has the key of " + address(lastRow_));
        started_ = true;
        last_.assign(key.begin(), key.end());
        lastRow_ = row;
        if (!live_.contains(row))
            return error(leaf, "an entry leads to " + address(row) + ", where no row of the table is");
        if (!seen_.add(row))
            return error(leaf, "two entries lead to " + address(row));
        if (tree_.leftOut.contains(row))
            return error(leaf, "the index ignores Null, yet it has an entry for " + address(row));
        if (tree_.known.contains(row))
            sum_ += fingerprint(key, row);
    }

    void error(PageNumber page, const std::string& text) override { v_.error(page, tree_.name + ": " + text); }
    void warning(PageNumber page, const std::string& text) override { v_.warning(page, tree_.name + ": " + text); }

    void finish(PageNumber definition) {
        const auto requireEntry = [this](RowId row) {
            if (!seen_.contains(row))
                v_.error(row, tree_.name + ": the index has no entry for this row");
        };
        tree_.known.forEach(requireEntry);
        tree_.keyless.forEach(requireEntry);
        tree_.wrongKeys = sum_ != tree_.keySum;
        if (index_.distinctKeys < distinct_)
            v_.warning(definition, tree_.name + ": the definition counts " + std::to_string(index_.distinctKeys) +
                                       " different keys, there are " + std::to_string(distinct_));
    }

private:
    Verification& v_;
    const PhysicalIndex& index_;
    Tree& tree_;
    const RowSet& live_;
    RowSet seen_;
    Owner owner_;
    KeyBytes allNull_, last_;
    RowId lastRow_;
    bool started_ = false;
    std::uint64_t sum_ = 0;
    std::size_t distinct_ = 0;
};

void IndexChecks::run(const RowSet& live) {
    for (Tree& tree : trees_) {
        const PhysicalIndex& index = table_.physicalIndexes[tree.physical];
        readUsageMap(v_, index.ownedMap, tree.name + ", owned pages"); // its own pages; its members: see checkIndexTree
        Walk walk(v_, table_, tree, live, RowSet(v_, rows_));
        checkIndexTree(v_.pager, {index.root, index.ownedMap, table_.page}, walk);
        walk.finish(table_.page);
    }
}

void IndexChecks::findWrongKeys(const ReadRow& read) {
    for (const Tree& tree : trees_) {
        if (!tree.wrongKeys)
            continue;
        const PhysicalIndex& index = table_.physicalIndexes[tree.physical];
        v_.guarded(index.root, tree.name, [&] {
            IndexTree entries(v_.pager, v_.database.allocator(), {index.root, index.ownedMap, table_.page});
            for (auto cursor = entries.begin(); cursor.valid(); cursor.next()) {
                const RowId row = cursor.row();
                if (!tree.known.contains(row))
                    continue;
                read(row, [&](const ValueOf& valueOf) {
                    if (std::ranges::equal(makeRowKey(table_, tree.physical, valueOf).bytes, cursor.key()))
                        return;
                    if (std::ranges::equal(foreignKey(table_, index, valueOf), cursor.key()))
                        v_.warning(row, tree.name + ": the key of the entry counts a letter such as ß once, as another "
                                                    "program does; this row cannot be found by its key");
                    else
                        v_.error(row, tree.name + ": the key of the entry is not that of this row");
                });
            }
        });
    }
}

} // namespace kelb::jet
