#include "ado/odbc_row_set.h"

#include "platform/utf8.h"

#include <algorithm>
#include <utility>

namespace kelb::ado {

namespace {

constexpr std::string_view kSaving = "save a row in table";

/// Its driver tells a text column without limit as one of 255 characters. The server itself never cuts a value, so
/// what is too long is left to it to refuse.
constexpr std::u16string_view kNoFalseLimits = u"PostgreSQL";

/// Units of a text or bytes of a binary.
std::size_t lengthOf(const Value& value) {
    if (const auto* text = std::get_if<std::u16string>(&value)) {
        return text->size();
    }
    const auto* bytes = std::get_if<Binary>(&value);
    return bytes == nullptr ? 0 : bytes->size();
}

/// A transaction around a change of which it must be seen what it did, unless the caller has one open.
class CheckedChange {
public:
    explicit CheckedChange(OdbcConnection& connection) : connection_(connection), own_(!connection.inTransaction()) {
        if (own_) {
            connection_.begin();
        }
    }
    ~CheckedChange() {
        if (own_) {
            try {
                connection_.rollback();
            } catch (const Error&) {
                return; // the connection is lost: the server has rolled back by itself, and the first error is told
            }
        }
    }
    CheckedChange(const CheckedChange&) = delete;
    CheckedChange& operator=(const CheckedChange&) = delete;
    bool owns() const noexcept { return own_; }
    void keep() {
        if (std::exchange(own_, false)) {
            connection_.commit();
        }
    }

private:
    OdbcConnection& connection_;
    bool own_;
};

} // namespace

OdbcRowSet::OdbcRowSet(std::shared_ptr<OdbcConnection> connection, std::u16string_view select, Fetch fetch)
    : connection_(std::move(connection)), select_(select) {
    auto statement = std::make_unique<OdbcStatement>(connection_, "open a record set");
    if (fetch == Fetch::Now) {
        statement->executeDirect(select_);
    } else {
        statement->prepare(select_);
    }
    columns_ = statement->columns();
    for (const OdbcColumn& column : columns_) {
        fields_.push_back(column.info);
    }
    table_ = tableOf(select_, connection_->nameCase());
    if (fetch == Fetch::Now) {
        rows_.members = readRows(*statement);
        rows_.gone.assign(rows_.members.size(), false);
    } else {
        pending_ = std::move(statement);
    }
}

// The rows

std::vector<OdbcRowSet::Row> OdbcRowSet::readRows(OdbcStatement& statement) const {
    std::vector<Row> rows;
    while (statement.fetch()) {
        Row& row = rows.emplace_back();
        row.reserve(columns_.size());
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            row.push_back(statement.read(i, columns_[i].info.type));
        }
    }
    return rows;
}

void OdbcRowSet::load() const {
    if (pending_ == nullptr) {
        return;
    }
    try {
        pending_->execute();
        rows_.members = readRows(*pending_);
    } catch (const Error&) {
        pending_->closeRows(); // so that it can be asked again
        throw;
    }
    pending_.reset();
    placeAdded();
    rows_.gone.assign(rows_.members.size(), false);
}

/// The row added last is the last member, whether or not the SELECT gives it.
void OdbcRowSet::placeAdded() const {
    if (!rows_.added) {
        return;
    }
    const Row added = *std::exchange(rows_.added, std::nullopt);
    const auto found = std::find_if(rows_.members.rbegin(), rows_.members.rend(), [&](const Row& row) {
        return std::all_of(rows_.addedFields.begin(), rows_.addedFields.end(),
                           [&](std::size_t field) { return row[field] == added[field]; });
    });
    if (found == rows_.members.rend()) {
        rows_.members.push_back(added);
    } else {
        std::rotate(found.base() - 1, found.base(), rows_.members.end());
    }
    rows_.current = rows_.members.size() - 1;
}

std::size_t OdbcRowSet::memberCount() const {
    load();
    return rows_.members.size();
}

bool OdbcRowSet::seek(std::size_t member) {
    load();
    rows_.current = member;
    return !rows_.gone[member];
}

const OdbcRowSet::Row& OdbcRowSet::currentRow() const {
    if (rows_.added) {
        return *rows_.added;
    }
    if (!rows_.current) {
        throw Error(Error::Kind::NoCurrentRow, "there is no current row");
    }
    if (rows_.gone[*rows_.current]) {
        throw Error(Error::Kind::RowDeleted, "the current row was deleted");
    }
    return rows_.members[*rows_.current];
}

bool OdbcRowSet::text(std::size_t field, std::u16string& out) {
    const Value& value = currentRow()[field];
    if (const auto* text = std::get_if<std::u16string>(&value)) {
        out = *text;
        return true;
    }
    out = toText(value);
    return !isNull(value);
}

// Changes

void OdbcRowSet::requireUpdatable() const {
    if (!table_) {
        throw odbcError(Error::Kind::ReadOnly, connection_->place(), {"change rows", {}, select_},
                        "they are no rows of one table");
    }
}

/// What is too long for its column, in the words of every provider; "" when the value fits.
std::string OdbcRowSet::tooLong(std::size_t field, const Value& value) const {
    const FieldInfo& info = fields_[field];
    const std::size_t length = lengthOf(value);
    if (info.size == 0 || length <= info.size) {
        return {};
    }
    const char* unit = info.type == FieldType::Binary ? " bytes" : " characters";
    return "table " + platform::toUtf8(table_->written) + ", field " + platform::toUtf8(info.name) + ", " +
           std::to_string(info.size) + unit + " allowed, " + std::to_string(length) + " given";
}

/// The changes as the columns hold them; result: their fields.
std::vector<std::size_t> OdbcRowSet::fill(Row& row, std::span<const FieldChange> changes) const {
    std::vector<std::size_t> fields;
    for (const FieldChange& change : changes) {
        try {
            row[change.field] = odbcValue(columns_[change.field], change.value);
        } catch (const Error& error) {
            throw odbcError(error.kind(), connection_->place(), {kSaving, table_->written, {}}, error.what());
        }
        const std::string fault = tooLong(change.field, row[change.field]);
        if (!fault.empty() && connection_->serverProduct() != kNoFalseLimits) {
            throw odbcError(Error::Kind::FieldTooSmall, connection_->place(), {kSaving, table_->written, {}},
                            "the field is too small: " + fault);
        }
        fields.push_back(change.field);
    }
    return fields;
}

/// The server has refused a text, mostly without saying which.
void OdbcRowSet::refuseTooLong(const Error& told, std::span<const std::size_t> fields, const Row& row) const {
    std::string faults;
    for (const std::size_t field : fields) {
        if (const std::string fault = tooLong(field, row[field]); !fault.empty()) {
            faults += fault + "; ";
        }
    }
    throw Error(told.kind(), faults.empty() ? told.what() : "the field is too small: " + faults + told.what(),
                told.state());
}

void OdbcRowSet::insert(std::span<const FieldChange> changes) {
    requireUpdatable();
    Row row(columns_.size());
    std::vector<std::size_t> fields = fill(row, changes);
    runInsert(fields, row);
    if (pending_ != nullptr) {
        rows_.added = std::move(row);
        rows_.addedFields = std::move(fields);
    } else {
        rows_.members.push_back(std::move(row));
        rows_.gone.push_back(false);
        rows_.current = rows_.members.size() - 1;
    }
}

void OdbcRowSet::runInsert(const std::vector<std::size_t>& columns, const Row& row) {
    if (insert_ == nullptr || insertFields_ != columns) {
        std::u16string names, marks;
        for (const std::size_t column : columns) {
            names += (names.empty() ? u"" : u", ") + connection_->quotedName(fields_[column].name);
            marks += marks.empty() ? u"?" : u", ?";
        }
        const std::u16string values =
            columns.empty() ? u" DEFAULT VALUES" : u" (" + names + u") VALUES (" + marks + u")";
        insert_ = std::make_unique<OdbcStatement>(connection_, kSaving, table_->written);
        insertFields_ = columns;
        insert_->prepare(u"INSERT INTO " + table_->written + values);
    }
    std::vector<OdbcParameter> parameters;
    parameters.reserve(columns.size());
    for (const std::size_t column : columns) {
        parameters.emplace_back(columns_[column], row[column]);
    }
    try {
        insert_->execute(parameters);
        insert_->closeRows();
    } catch (const Error& error) {
        insert_.reset(); // some drivers leave a failed statement in no state to be used again
        if (error.kind() == Error::Kind::FieldTooSmall) {
            refuseTooLong(error, columns, row);
        }
        throw;
    }
}

/// The current row with its stored values; a row just added is looked up first, since the server may have filled it.
OdbcRowSet::Row& OdbcRowSet::changeableRow() {
    requireUpdatable();
    if (rows_.added) {
        load();
    }
    return const_cast<Row&>(currentRow()); // NOLINT: this object is not const
}

void OdbcRowSet::update(std::span<const FieldChange> changes) {
    Row& stored = changeableRow();
    Row row = stored;
    const std::vector<std::size_t> fields = fill(row, changes);
    std::u16string front = u"UPDATE " + table_->written + u" SET ";
    std::vector<OdbcParameter> parameters;
    for (const std::size_t field : fields) {
        front += (field == fields.front() ? u"" : u", ") + connection_->quotedName(fields_[field].name) + u" = ?";
        parameters.emplace_back(columns_[field], row[field]);
    }
    try {
        changeOneRow(std::move(front), std::move(parameters), stored);
    } catch (const Error& error) {
        if (error.kind() == Error::Kind::FieldTooSmall) {
            refuseTooLong(error, fields, row);
        }
        throw;
    }
    stored = std::move(row);
}

void OdbcRowSet::erase() {
    changeOneRow(u"DELETE FROM " + table_->written, {}, changeableRow());
    rows_.gone[*rows_.current] = true;
}

/// Behind `statement`: where the row is. Its values become parameters.
std::u16string OdbcRowSet::addPlace(std::u16string statement, const Row& stored,
                                    std::vector<OdbcParameter>& parameters) const {
    statement += u" WHERE ";
    for (const std::size_t column : key_->columns) {
        const bool null = isNull(stored[column]);
        if (null && key_->unique) {
            throw odbcError(Error::Kind::Refused, connection_->place(), {"change table", table_->written, {}},
                            "the server gave the new row its key " + platform::toUtf8(fields_[column].name) +
                                "; open the record set again to change it");
        }
        statement += column == key_->columns.front() ? u"" : u" AND ";
        statement += connection_->quotedName(fields_[column].name);
        statement += null ? u" IS NULL" : u" = ?";
        if (!null) {
            parameters.emplace_back(columns_[column], stored[column]);
        }
    }
    return statement;
}

/// Runs the UPDATE or DELETE that `front` begins on the row with these stored values; `parameters` are those of
/// `front`.
void OdbcRowSet::changeOneRow(std::u16string front, std::vector<OdbcParameter> parameters, const Row& stored) {
    if (!key_) {
        key_ = keyOf(*table_, columns_, connection_);
    }
    parameters.reserve(parameters.size() + key_->columns.size());
    const OdbcDoing doing{"change table", table_->written, {}};
    std::optional<CheckedChange> checked;
    if (!key_->unique) {
        checked.emplace(*connection_);
    }
    const std::u16string text = addPlace(std::move(front), stored, parameters);
    std::unique_ptr<OdbcStatement> change = std::move(change_); // gone after an error
    if (change == nullptr || change->text() != text) {
        change = std::make_unique<OdbcStatement>(connection_, doing.action, table_->written);
        change->prepare(text);
    }
    const auto hit = change->execute(parameters);
    change->closeRows();
    change_ = std::move(change);
    if (hit == 0) {
        throw odbcError(Error::Kind::RowDeleted, connection_->place(), doing,
                        "the row was deleted or changed by somebody else");
    }
    if (checked && hit != 1) {
        throw odbcError(Error::Kind::Refused, connection_->place(), doing,
                        "several rows are equal in every field, so that one of them cannot be found again: give the "
                        "table a primary key" +
                            std::string(checked->owns() ? "" : ", and roll the transaction back"));
    }
    if (checked) {
        checked->keep();
    }
}

} // namespace kelb::ado
