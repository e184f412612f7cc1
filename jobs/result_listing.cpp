#include "jobs/result_listing.h"

#include "ado/connection_string.h"
#include "jobs/job_error.h"
#include "platform/letter_case.h"
#include "platform/utf8.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>

namespace kelb::jobs {
namespace {

using Column = ResultListing::Column;

constexpr std::size_t kRemembered = 512; ///< lines; several screens full

/// What tables call the columns, the usual name first: article tables, the table of products, crawl tables.
struct ColumnNames {
    Column column;
    std::initializer_list<std::u16string_view> names;
};
constexpr std::u16string_view kPassField = u"blnPass";

std::optional<std::size_t> findField(std::span<const ado::FieldInfo> fields,
                                     std::initializer_list<std::u16string_view> names) {
    for (const std::u16string_view name : names) {
        const auto found = std::find_if(fields.begin(), fields.end(), [name](const ado::FieldInfo& field) {
            return platform::equalNoCase(field.name, name);
        });
        if (found != fields.end()) {
            return static_cast<std::size_t>(found - fields.begin());
        }
    }
    return std::nullopt;
}

/// A record set of a server is read into memory whole, which a list of any length must not be.
std::u16string accessDatabase(std::u16string_view text) {
    const ado::ConnectionString parsed(text);
    for (const std::u16string_view key : {u"Driver", u"DSN", u"Provider"}) {
        if (parsed.has(key)) {
            throw JobError("results are shown of Access databases only, not of a server. Name the path of an .mdb "
                           "file; kelb db export reads what a server holds");
        }
    }
    return ado::jetConnectionString(text);
}

void openForReading(ado::Connection& connection, std::u16string_view database) {
    connection.mode = ado::Connection::Mode::Read;
    connection.Open(accessDatabase(database));
}

bool isText(const ado::FieldInfo& field) noexcept {
    return field.type == ado::FieldType::Text || field.type == ado::FieldType::Memo;
}

} // namespace

std::vector<std::u16string> tablesOf(ado::Environment& environment, std::u16string_view database) {
    ado::Connection connection(environment);
    openForReading(connection, database);
    const std::unique_ptr<ado::RowSet> all = connection.session().tables();
    std::vector<std::u16string> tables;
    for (std::size_t i = 0; i < all->memberCount(); ++i) {
        if (all->seek(i) && ado::toText(all->value(1)) == u"TABLE") {
            tables.push_back(ado::toText(all->value(0)));
        }
    }
    return tables;
}

ResultListing::ResultListing(ado::Environment& environment, std::u16string_view database, std::u16string_view table,
                             std::optional<Order> order)
    : environment_(environment), database_(database), table_(table), order_(order), connection_(environment),
      remembered_(kRemembered) {
    openForReading(connection_, database_);
    openRows();
    if (!at(Column::Title) && !at(Column::Body)) {
        throw JobError("table " + platform::toUtf8(table_) + " of " + platform::toUtf8(database_) +
                       " has neither a title (sT, TVName, TVCode) nor a body (sC): it holds no articles");
    }
}

void ResultListing::openRows() {
    const ColumnNames kNames[] = {{Column::Title, {u"sT", u"TVName", u"TVCode"}},
                                  {Column::Body, {u"sC"}},
                                  {Column::Url, {u"url"}},
                                  {Column::Time, {u"recTime", u"recdate"}},
                                  {Column::Pass, {kPassField}}};
    const std::u16string all = u"select * from [" + table_ + u"]";
    rows_ = connection_.session().open(all, ado::CursorType::Keyset, ado::LockType::Optimistic);
    for (const ColumnNames& names : kNames) {
        columns_[static_cast<std::size_t>(names.column)] = findField(rows_->fields(), names.names);
    }
    // A yes/no field only: nothing else can be set to true and false.
    if (const auto pass = at(Column::Pass); pass && rows_->fields()[*pass].type != ado::FieldType::YesNo) {
        columns_[static_cast<std::size_t>(Column::Pass)].reset();
    }
    if (order_ && at(order_->column)) {
        const std::size_t rows = rows_->memberCount();
        if (rows > kMostSorted) {
            throw JobError("table " + platform::toUtf8(table_) + " has " + std::to_string(rows) + " rows; up to " +
                           std::to_string(kMostSorted) + " can be sorted");
        }
        rows_ = connection_.session().open(all + u" order by [" + *fieldOf(order_->column) +
                                               (order_->descending ? u"] desc" : u"]"),
                                           ado::CursorType::Keyset, ado::LockType::Optimistic);
    }
    forget();
}

std::optional<std::u16string> ResultListing::fieldOf(Column column) const {
    const auto& field = at(column);
    return field ? std::optional(rows_->fields()[*field].name) : std::nullopt;
}

void ResultListing::forget() noexcept {
    for (Remembered& each : remembered_) {
        each.filled = false;
    }
}

const ResultListing::Line& ResultListing::line(std::size_t row) {
    Remembered& place = remembered_[row % kRemembered];
    if (!place.filled || place.row != row) {
        place.filled = false;
        place.line = read(row);
        place.row = row;
        place.filled = true;
    }
    return place.line;
}

/// Rows that were there before the listing began anew are gone like deleted ones.
bool ResultListing::go(std::size_t row) {
    return row < rows_->memberCount() && rows_->seek(row);
}

ResultListing::Line ResultListing::read(std::size_t row) {
    Line line;
    if (!go(row)) {
        line.gone = true;
        return line;
    }
    current(Column::Title, line.title);
    current(Column::Url, line.url);
    current(Column::Time, line.time);
    if (current(Column::Body, body_)) {
        line.length = body_.size();
    }
    if (const auto& pass = at(Column::Pass)) {
        line.pass = std::get<bool>(rows_->value(*pass));
    }
    return line;
}

/// Of the current row.
bool ResultListing::current(Column column, std::u16string& out) {
    const auto& field = at(column);
    out.clear();
    if (!field) {
        return false;
    }
    if (isText(rows_->fields()[*field])) {
        return rows_->text(*field, out);
    }
    const ado::Value value = rows_->value(*field);
    out = ado::toText(value);
    return !ado::isNull(value);
}

bool ResultListing::text(std::size_t row, Column column, std::u16string& out) {
    out.clear();
    return go(row) && current(column, out);
}

std::optional<std::vector<RowField>> ResultListing::fields(std::size_t row) {
    if (!go(row)) {
        return std::nullopt;
    }
    std::vector<RowField> fields;
    for (std::size_t i = 0; i < rows_->fields().size(); ++i) {
        const ado::Value value = rows_->value(i);
        fields.push_back({rows_->fields()[i].name, ado::toText(value), ado::isNull(value)});
    }
    return fields;
}

std::optional<std::uint32_t> ResultListing::place(std::size_t row) {
    return go(row) ? rows_->place() : std::nullopt;
}

/// Opens the database for writing as long as the change takes; other programs may read it again afterwards.
void ResultListing::write(const std::function<void(ado::Connection&)>& change) {
    {
        ado::Connection writer(environment_);
        writer.mode = ado::Connection::Mode::Write;
        writer.Open(ado::jetConnectionString(database_));
        forget();
        change(writer);
        writer.Close();
    }
    environment_.leaveToReaders(database_);
}

std::size_t ResultListing::setPass(std::span<const std::size_t> rows, bool pass) {
    std::size_t set = 0;
    write([&](ado::Connection& writer) {
        const ado::FieldChange change[] = {{*at(Column::Pass), ado::Value(pass)}};
        for (const std::size_t row : rows) {
            if (go(row)) {
                rows_->update(change);
                ++set;
                writer.flushIfDue();
            }
        }
    });
    return set;
}

bool ResultListing::addPass(std::span<const std::size_t> rows) {
    std::vector<std::optional<std::uint32_t>> places;
    places.reserve(rows.size());
    std::ranges::transform(rows, std::back_inserter(places), [this](std::size_t row) { return place(row); });
    write([&](ado::Connection& writer) {
        writer.Execute(u"ALTER TABLE [" + table_ + u"] ADD " + std::u16string(kPassField) + u" YESNO");
    });
    openRows();
    return std::ranges::equal(rows, places, [this](std::size_t row, const std::optional<std::uint32_t>& before) {
        return place(row) == before;
    });
}

} // namespace kelb::jobs
