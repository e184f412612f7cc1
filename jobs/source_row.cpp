#include "jobs/source_row.h"

#include "ado/connection_string.h"
#include "ado/recordset.h"
#include "platform/letter_case.h"
#include "platform/text.h"
#include "platform/utf8.h"

#include <algorithm>

namespace kelb::jobs {
namespace {

std::u16string conditionFor(const RowName& name) {
    std::u16string condition;
    if (name.id) {
        condition = u"id=" + platform::number(*name.id);
    }
    if (!name.url.empty()) {
        condition += condition.empty() ? u"url='" : u" and url='";
        condition += platform::quoted(name.url) + u"'";
    }
    return condition;
}

} // namespace

const RowField* SourceRow::field(std::u16string_view name) const noexcept {
    const auto found = std::find_if(fields.begin(), fields.end(),
                                    [name](const RowField& each) { return platform::equalNoCase(each.name, name); });
    return found == fields.end() ? nullptr : &*found;
}

void SourceRows::close() noexcept {
    connection_.reset();
    database_.clear();
    withUrl_.clear();
}

void SourceRows::open(const std::u16string& database) {
    if (connection_ && database == database_) {
        return;
    }
    close();
    const std::vector<std::u16string> tables = tablesOf(environment_, database);
    database_ = database;
    connection_.emplace(environment_);
    connection_->mode = ado::Connection::Mode::Read;
    connection_->Open(ado::jetConnectionString(database));
    std::vector<std::u16string> others;
    for (const std::u16string& table : tables) {
        ado::Recordset rows;
        rows.Open(u"[" + table + u"]", *connection_); // lists no row
        if (rows.hasField(u"url")) {
            (rows.hasField(u"content") ? withUrl_ : others).push_back(table);
        }
    }
    withUrl_.insert(withUrl_.end(), others.begin(), others.end());
}

std::optional<SourceRow> SourceRows::find(const RowName& name) {
    if (!name.id && name.url.empty()) {
        return std::nullopt;
    }
    open(name.database);
    if (!name.table.empty()) {
        return findIn(name.table, name);
    }
    for (const std::u16string& table : withUrl_) {
        if (auto row = findIn(table, name)) {
            return row;
        }
    }
    return std::nullopt;
}

std::optional<SourceRow> SourceRows::findIn(const std::u16string& table, const RowName& name) {
    ado::Recordset rows;
    rows.Open(u"select * from [" + table + u"] where " + conditionFor(name), *connection_);
    if (rows.Eof()) {
        return std::nullopt;
    }
    SourceRow row{database_, table, {}};
    for (std::size_t i = 0; i < rows.fieldCount(); ++i) {
        const ado::Value value = rows.value(i);
        row.fields.push_back({rows.field(i).name, ado::toText(value), ado::isNull(value)});
    }
    return row;
}

} // namespace kelb::jobs
