#include "ado/sheet_select.h"

#include "ado/fixed_row_set.h"
#include "ado/sql_evaluator.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <utility>

namespace kelb::ado {

namespace {

/// A row for expressions: a value of a column of texts is one, whatever its cell holds.
class SheetRowFields final : public RowFields {
public:
    explicit SheetRowFields(const SheetTable& table) : table_(table) {}

    void read(std::size_t row) { table_.readRow(row, values_); }

    Value value(std::size_t field) const override {
        const Value& value = values_[field];
        const bool asText = !ado::isNull(value) && familyOf(table_.fields()[field].type) == Family::Text;
        return asText ? Value(toText(value)) : value;
    }
    bool text(std::size_t field, std::u16string& out) const override {
        out = toText(values_[field]);
        return !isNull(field);
    }
    bool isNull(std::size_t field) const override { return ado::isNull(values_[field]); }

private:
    const SheetTable& table_;
    std::vector<Value> values_;
};

class SheetQuery {
public:
    SheetQuery(const SheetTable& table, const SelectStatement& select)
        : table_(table), select_(select), scope_{table.name(), select.table.alias, table.fields()} {
        if (select.where) {
            where_ = bindCondition(*select.where, scope_);
        }
        order_ = bindOrder(select, scope_);
    }

    const Scope& scope() const noexcept { return scope_; }

    /// Numbers of the rows, in their order.
    std::vector<std::size_t> rows() const {
        std::vector<std::size_t> found;
        std::vector<std::vector<Value>> keys; // one for each row found
        SheetRowFields fields(table_);
        Evaluator evaluator;
        const std::size_t enough = order_.empty() && select_.top ? *select_.top : table_.rowCount();
        for (std::size_t row = 0; row < table_.rowCount() && found.size() < enough; ++row) {
            fields.read(row);
            if (where_ && evaluator.test(*where_, fields) != Truth::True) {
                continue;
            }
            found.push_back(row);
            std::vector<Value>& key = keys.emplace_back();
            for (const OrderKey& part : order_) {
                key.push_back(fields.value(part.column));
            }
        }
        return order_.empty() ? found : sorted(found, keys);
    }

private:
    std::vector<std::size_t> sorted(const std::vector<std::size_t>& found,
                                    const std::vector<std::vector<Value>>& keys) const {
        std::vector<std::size_t> places(found.size());
        std::iota(places.begin(), places.end(), std::size_t{0});
        std::stable_sort(places.begin(), places.end(), [&](std::size_t a, std::size_t b) {
            for (std::size_t i = 0; i < order_.size(); ++i) {
                if (const int order = compareKeys(keys[a][i], keys[b][i]); order != 0) {
                    return (order < 0) == order_[i].ascending;
                }
            }
            return false;
        });
        places.resize(std::min(places.size(), select_.top.value_or(places.size())));
        std::transform(places.begin(), places.end(), places.begin(), [&](std::size_t place) { return found[place]; });
        return places;
    }

    /// Null comes first.
    static int compareKeys(const Value& a, const Value& b) {
        return compareValues(a, b).value_or(static_cast<int>(isNull(b)) - static_cast<int>(isNull(a)));
    }

    const SheetTable& table_;
    const SelectStatement& select_;
    Scope scope_;
    std::optional<BoundExpression> where_;
    std::vector<OrderKey> order_;
};

} // namespace

std::unique_ptr<RowSet> openSheetSelect(const std::shared_ptr<const SheetTable>& table, const SelectStatement& select) {
    const SheetQuery query(*table, select);
    std::vector<FieldInfo> fields;
    std::vector<std::size_t> columns;
    for (const SelectStatement::Item& item : select.items) {
        if (item.count) {
            return countRowSet(item.as, query.rows().size(), select.top);
        }
        if (item.column.name.empty()) {
            requireTable(item.column, query.scope());
            for (std::size_t column = 0; column < table->fields().size(); ++column) {
                fields.push_back(table->fields()[column]);
                columns.push_back(column);
            }
        } else {
            const std::size_t column = bindColumn(item.column, query.scope());
            fields.push_back(table->fields()[column]);
            fields.back().name = item.as.empty() ? fields.back().name : item.as;
            columns.push_back(column);
        }
    }
    return std::make_unique<SheetRowSet>(table, std::move(fields), std::move(columns), query.rows());
}

} // namespace kelb::ado
