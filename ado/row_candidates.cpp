#include "ado/row_search.h"

#include "jet/error.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace kelb::ado {

namespace {

/// One equality of a column with a constant.
struct Probe {
    std::size_t column;
    const Value* value;
};
/// A row that the condition holds for satisfies one of them at least.
using Probes = std::vector<Probe>;

/// More rows than this under one equality make it worth while to look whether another one leads to fewer.
constexpr std::size_t kFewRows = 64;
constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();

bool isWhole(jet::ColumnType type) noexcept {
    return type == jet::ColumnType::Byte || type == jet::ColumnType::Integer || type == jet::ColumnType::Long;
}

bool isTextual(jet::ColumnType type) noexcept {
    return type == jet::ColumnType::Text || type == jet::ColumnType::Memo;
}

class CandidateSearch {
public:
    CandidateSearch(SharedDatabase& database, jet::Table& table) : database_(database), table_(table) {}

    std::optional<std::vector<jet::RowId>> run(const BoundExpression& where) {
        std::vector<Probes> ways = waysOf(where);
        if (ways.empty()) {
            return std::nullopt;
        }
        std::stable_sort(ways.begin(), ways.end(),
                         [this](const Probes& a, const Probes& b) { return costOf(a) < costOf(b); });
        std::vector<jet::RowId> rows;
        for (std::size_t i = 0; i < ways.size() && ways.size() > 1; ++i) {
            if (gather(ways[i], kFewRows, rows)) {
                return rows;
            }
        }
        gather(ways.front(), kNoLimit, rows);
        return rows;
    }

private:
    /// Conditions that are joined by AND: each that can be looked up is a way.
    std::vector<Probes> waysOf(const BoundExpression& where) const {
        std::vector<Probes> ways;
        if (where.op != Operator::And) {
            if (auto probes = probesOf(where)) {
                ways.push_back(std::move(*probes));
            }
            return ways;
        }
        for (const BoundExpression& operand : where.operands) {
            for (Probes& way : waysOf(operand)) {
                ways.push_back(std::move(way));
            }
        }
        return ways;
    }

    std::optional<Probes> probesOf(const BoundExpression& condition) const {
        switch (condition.op) {
        case Operator::Equal:
        case Operator::Like:
        case Operator::In:
            return probesOfEquality(condition);
        case Operator::Or:
            return probesOfAny(condition);
        case Operator::And: {
            std::vector<Probes> ways = waysOf(condition);
            return ways.empty() ? std::nullopt : std::optional(std::move(ways.front()));
        }
        default:
            return std::nullopt;
        }
    }

    std::optional<Probes> probesOfAny(const BoundExpression& list) const {
        Probes all;
        for (const BoundExpression& operand : list.operands) {
            const auto probes = probesOf(operand);
            if (!probes) {
                return std::nullopt;
            }
            all.insert(all.end(), probes->begin(), probes->end());
        }
        return all;
    }

    std::optional<Probes> probesOfEquality(const BoundExpression& condition) const {
        const BoundExpression& tested = condition.operands[0];
        const bool like = condition.op == Operator::Like;
        if (tested.op != Operator::Column || !canLookUp(tested.field) || (like && !tested.isTextColumn())) {
            return std::nullopt;
        }
        Probes probes;
        for (std::size_t i = 1; i < condition.operands.size(); ++i) {
            const BoundExpression& wanted = condition.operands[i];
            if (wanted.op != Operator::Constant || (like && !isPlainPattern(wanted))) {
                return std::nullopt;
            }
            if (!isNull(wanted.constant)) { // nothing equals Null
                probes.push_back({tested.field, &wanted.constant});
            }
        }
        return probes;
    }

    static bool isPlainPattern(const BoundExpression& pattern) {
        const auto* text = std::get_if<std::u16string>(&pattern.constant);
        return text != nullptr && text->find_first_of(u"%_[") == text->npos;
    }

    bool canLookUp(std::size_t column) const {
        const jet::Column& definition = table_.definition().columns[column];
        return isTextual(definition.type) || (isWhole(definition.type) && table_.indexOn(definition));
    }

    /// 0: an index of the file, 1: a hash index that is there, 2: one that has to be made.
    int costOf(const Probes& probes) const {
        int cost = 0;
        for (const Probe& probe : probes) {
            const jet::Column& column = table_.definition().columns[probe.column];
            if (!table_.indexOn(column)) {
                cost = std::max(cost, database_.hasHashIndex(table_, column) ? 1 : 2);
            }
        }
        return cost;
    }

    /// False when there are more than `limit`.
    bool gather(const Probes& probes, std::size_t limit, std::vector<jet::RowId>& rows) {
        rows.clear();
        for (const Probe& probe : probes) {
            if (!lookUp(probe, limit, rows) || rows.size() > limit) {
                return false;
            }
        }
        std::sort(rows.begin(), rows.end());
        rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
        return true;
    }

    bool lookUp(const Probe& probe, std::size_t limit, std::vector<jet::RowId>& rows) {
        const jet::Column& column = table_.definition().columns[probe.column];
        if (!isTextual(column.type)) {
            return lookUpNumber(column, *probe.value, rows);
        }
        const auto& text = std::get<std::u16string>(*probe.value);
        if (column.type == jet::ColumnType::Text && text.size() > column.length) {
            return true; // longer than any value can be
        }
        if (const auto index = table_.indexOn(column); index && lookUpText(*index, *probe.value, rows)) {
            return true;
        }
        return database_.hashIndex(table_, column).find(text, limit, rows);
    }

    /// The keys of an index know no letter case and ignore trailing blanks, so that its rows are candidates like any
    /// others. False when no key can be made of the text.
    bool lookUpText(std::size_t index, const Value& value, std::vector<jet::RowId>& rows) const {
        try {
            const std::vector<jet::RowId> found = table_.lookUp(index, value);
            rows.insert(rows.end(), found.begin(), found.end());
            return true;
        } catch (const jet::Error& error) {
            const bool noKey =
                error.kind() == jet::Error::Kind::KeyNotPossible || error.kind() == jet::Error::Kind::FieldTooSmall;
            if (!noKey) {
                throw;
            }
            return false;
        }
    }

    bool lookUpNumber(const jet::Column& column, const Value& value, std::vector<jet::RowId>& rows) const {
        const Quantity number = numberOf(value);
        const double wanted = toDouble(number);
        const bool whole =
            wanted == static_cast<double>(static_cast<std::int32_t>(std::clamp(wanted, -2147483648.0, 2147483647.0)));
        const auto [low, high] = boundsOf(column.type);
        if (!whole || wanted < low || wanted > high) {
            return true; // no whole column holds it
        }
        const std::vector<jet::RowId> found = table_.lookUp(*table_.indexOn(column), static_cast<std::int32_t>(wanted));
        rows.insert(rows.end(), found.begin(), found.end());
        return true;
    }

    static std::pair<double, double> boundsOf(jet::ColumnType type) noexcept {
        switch (type) {
        case jet::ColumnType::Byte:
            return {0, 255};
        case jet::ColumnType::Integer:
            return {-32768, 32767};
        default:
            return {-2147483648.0, 2147483647.0};
        }
    }

    SharedDatabase& database_;
    jet::Table& table_;
};

} // namespace

std::optional<std::vector<jet::RowId>> candidateRows(SharedDatabase& database, jet::Table& table,
                                                     const BoundExpression& where) {
    return CandidateSearch(database, table).run(where);
}

} // namespace kelb::ado
