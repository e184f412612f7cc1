#include "ado/recordset.h"

#include "ado/error.h"
#include "ado/sql_lexer.h"

#include "platform/letter_case.h"
#include "platform/text.h"
#include "platform/utf8.h"

#include <algorithm>
#include <optional>
#include <unordered_set>
#include <utility>

namespace kelb::ado {

namespace {

constexpr std::size_t kShownSource = 100; ///< characters

bool isSelect(std::u16string_view source) {
    constexpr std::u16string_view kSelect = u"SELECT";
    return source.size() > kSelect.size() && platform::equalNoCase(source.substr(0, kSelect.size()), kSelect) &&
           !isPlainName(source.substr(0, kSelect.size() + 1));
}

/// The name of a table stands for all of its rows.
std::u16string statementOf(std::u16string_view source) {
    source = platform::trimBlanks(source);
    if (isSelect(source)) {
        return std::u16string(source);
    }
    const bool asWritten = isPlainName(source) || source.starts_with(u'[');
    return u"select * from " + (asWritten ? std::u16string(source) : u"[" + std::u16string(source) + u"]");
}

} // namespace

/// Rows and where the set stands among them. The first row is looked for only when somebody asks, so that a set opened
/// for adding rows never has to list those that are there.
struct Recordset::Impl {
    enum class Place {
        Start, ///< on the first row, which nobody has asked for yet
        Row,   ///< on `member`
        Added, ///< on the row added last; its number is found when a move needs it
        Before,
        Behind,
        Nowhere ///< there are no rows
    };
    enum class Editing { None, Row, NewRow };

    std::u16string source;
    std::unique_ptr<RowSet> rows;
    bool lockAllowsChanges = false;
    Place place = Place::Start;
    std::size_t member = 0;
    std::unordered_set<std::size_t> deletedHere;
    Editing editing = Editing::None; ///< a new row being edited leaves `place` alone until it is saved
    std::vector<FieldChange> pending;
    std::optional<std::uint32_t> newPlace; ///< wanted by the new row being edited

    std::string shown() const;
    [[noreturn]] void throwNoRow() const;
    void settle();
    bool goForward(std::size_t from);
    bool goBackward(std::size_t end);
    void requireRow();
    void requireChangeable() const;
    const FieldInfo& requireField(std::size_t field) const;
    FieldChange* findPending(std::size_t field);
    void dropEdits() noexcept;
    void save();
    Value newRowValue(std::size_t field) const;
};

std::string Recordset::Impl::shown() const {
    const bool cut = source.size() > kShownSource;
    return "record set \"" + platform::toUtf8(source.substr(0, kShownSource)) + (cut ? "…\"" : "\"");
}

void Recordset::Impl::throwNoRow() const {
    const char* where = place == Place::Before    ? "stands before its first row"
                        : place == Place::Nowhere ? "has no rows"
                                                  : "stands behind its last row";
    throw Error(Error::Kind::NoCurrentRow, shown() + " " + where);
}

/// The first row at or behind `from` that is still there.
bool Recordset::Impl::goForward(std::size_t from) {
    const std::size_t count = rows->memberCount();
    for (std::size_t i = from; i < count; ++i) {
        if (rows->seek(i)) {
            place = Place::Row;
            member = i;
            return true;
        }
    }
    return false;
}

/// The last row before `end` that is still there.
bool Recordset::Impl::goBackward(std::size_t end) {
    for (std::size_t i = end; i > 0; --i) {
        if (rows->seek(i - 1)) {
            place = Place::Row;
            member = i - 1;
            return true;
        }
    }
    return false;
}

void Recordset::Impl::settle() {
    if (place == Place::Start && !goForward(0)) {
        place = Place::Nowhere;
    } else if (place == Place::Added) {
        member = rows->memberCount() - 1;
        place = Place::Row;
    }
}

void Recordset::Impl::requireRow() {
    if (place == Place::Start) {
        settle();
    }
    if (place != Place::Row && place != Place::Added) {
        throwNoRow();
    }
}

void Recordset::Impl::requireChangeable() const {
    if (!lockAllowsChanges) {
        throw Error(Error::Kind::ReadOnly, shown() + " was opened for reading only");
    }
    rows->requireUpdatable();
}

const FieldInfo& Recordset::Impl::requireField(std::size_t field) const {
    if (field >= rows->fields().size()) {
        throw Error(Error::Kind::NoSuchColumn, shown() + " has " + std::to_string(rows->fields().size()) +
                                                   " fields, none with number " + std::to_string(field));
    }
    return rows->fields()[field];
}

FieldChange* Recordset::Impl::findPending(std::size_t field) {
    const auto found =
        std::find_if(pending.begin(), pending.end(), [&](const FieldChange& change) { return change.field == field; });
    return found == pending.end() ? nullptr : &*found;
}

void Recordset::Impl::dropEdits() noexcept {
    pending.clear();
    editing = Editing::None;
}

/// Edits are dropped before they are saved: an error leaves none behind.
void Recordset::Impl::save() {
    const std::vector<FieldChange> changes = std::exchange(pending, {});
    switch (std::exchange(editing, Editing::None)) {
    case Editing::None:
        break;
    case Editing::Row:
        if (!changes.empty()) {
            rows->update(changes);
        }
        break;
    case Editing::NewRow:
        if (newPlace) {
            rows->insertAt(*newPlace, changes);
        } else {
            rows->insert(changes);
        }
        place = Place::Added;
        break;
    }
}

Value Recordset::Impl::newRowValue(std::size_t field) const {
    return rows->fields()[field].type == FieldType::YesNo ? Value(false) : Value();
}

// Recordset

Recordset::Recordset() = default;
Recordset::~Recordset() = default;
Recordset::Recordset(Recordset&&) noexcept = default;
Recordset& Recordset::operator=(Recordset&&) noexcept = default;

Recordset::Impl& Recordset::open() const {
    if (impl_ == nullptr) {
        throw Error(Error::Kind::NoCurrentRow, "the record set is closed");
    }
    return *impl_;
}

void Recordset::Open(std::u16string_view source, Connection& connection) {
    Open(source, connection, cursorType, lockType);
}

void Recordset::Open(std::u16string_view source, Connection& connection, CursorType cursor, LockType lock) {
    if (impl_ != nullptr) {
        throw Error(Error::Kind::Refused, open().shown() + " is open already; close it first");
    }
    const std::u16string statement = statementOf(source);
    Session& session = connection.session();
    session.setCommandTimeout(connection.CommandTimeout);
    attach(session.open(statement, cursor, lock), lock != LockType::ReadOnly);
    impl_->source = statement;
    cursorType = cursor;
    lockType = lock;
}

void Recordset::attach(std::unique_ptr<RowSet> rows, bool updatable) {
    impl_ = std::make_unique<Impl>();
    impl_->rows = std::move(rows);
    impl_->lockAllowsChanges = updatable;
}

ObjectState Recordset::State() const noexcept {
    return impl_ == nullptr ? ObjectState::Closed : ObjectState::Open;
}

void Recordset::Close() {
    impl_.reset();
}

std::size_t Recordset::RecordCount() const {
    const Impl& set = open();
    return set.rows->memberCount() - set.deletedHere.size();
}

bool Recordset::Eof() const {
    Impl& set = open();
    if (set.editing == Impl::Editing::NewRow) {
        return false;
    }
    set.settle();
    return set.place == Impl::Place::Behind || set.place == Impl::Place::Nowhere;
}

bool Recordset::Bof() const {
    Impl& set = open();
    if (set.editing == Impl::Editing::NewRow) {
        return false;
    }
    set.settle();
    return set.place == Impl::Place::Before || set.place == Impl::Place::Nowhere;
}

void Recordset::MoveFirst() {
    Impl& set = open();
    set.save();
    if (!set.goForward(0)) {
        set.place = Impl::Place::Nowhere;
    }
}

void Recordset::MoveLast() {
    Impl& set = open();
    set.save();
    if (!set.goBackward(set.rows->memberCount())) {
        set.place = Impl::Place::Nowhere;
    }
}

void Recordset::MoveNext() {
    Impl& set = open();
    set.save();
    set.settle();
    if (set.place == Impl::Place::Behind || set.place == Impl::Place::Nowhere) {
        set.throwNoRow();
    }
    if (!set.goForward(set.place == Impl::Place::Before ? 0 : set.member + 1)) {
        set.place = Impl::Place::Behind;
    }
}

void Recordset::MovePrevious() {
    Impl& set = open();
    set.save();
    set.settle();
    if (set.place == Impl::Place::Before || set.place == Impl::Place::Nowhere) {
        set.throwNoRow();
    }
    if (!set.goBackward(set.place == Impl::Place::Behind ? set.rows->memberCount() : set.member)) {
        set.place = Impl::Place::Before;
    }
}

void Recordset::AddNew() {
    Impl& set = open();
    set.save();
    set.requireChangeable();
    set.editing = Impl::Editing::NewRow;
    set.newPlace.reset();
}

void Recordset::AddNewAt(std::uint32_t bookmark) {
    AddNew();
    open().newPlace = bookmark;
}

void Recordset::Reserve(std::span<const std::uint32_t> bookmarks) {
    Impl& set = open();
    set.requireChangeable();
    set.rows->reservePlaces(bookmarks);
}

std::optional<std::uint32_t> Recordset::Bookmark() const {
    Impl& set = open();
    set.requireRow();
    return set.rows->place();
}

void Recordset::Update() {
    open().save();
}

void Recordset::CancelUpdate() {
    open().dropEdits();
}

void Recordset::Delete() {
    Impl& set = open();
    set.requireChangeable();
    const bool onlyNew = set.editing == Impl::Editing::NewRow;
    set.dropEdits();
    if (onlyNew) {
        return;
    }
    set.requireRow();
    set.settle();
    set.rows->erase();
    set.deletedHere.insert(set.member);
}

std::size_t Recordset::fieldCount() const {
    return open().rows->fields().size();
}

const FieldInfo& Recordset::field(std::size_t index) const {
    return open().requireField(index);
}

std::size_t Recordset::fieldIndex(std::u16string_view name) const {
    const auto& fields = open().rows->fields();
    const auto found = std::find_if(fields.begin(), fields.end(),
                                    [&](const FieldInfo& field) { return platform::equalNoCase(field.name, name); });
    if (found == fields.end()) {
        throw Error(Error::Kind::NoSuchColumn, open().shown() + " has no field \"" + platform::toUtf8(name) + "\"");
    }
    return static_cast<std::size_t>(found - fields.begin());
}

bool Recordset::hasField(std::u16string_view name) const {
    const auto& fields = open().rows->fields();
    return std::any_of(fields.begin(), fields.end(),
                       [&](const FieldInfo& field) { return platform::equalNoCase(field.name, name); });
}

Value Recordset::value(std::size_t field) const {
    Impl& set = open();
    set.requireField(field);
    if (const FieldChange* change = set.findPending(field)) {
        return change->value;
    }
    if (set.editing == Impl::Editing::NewRow) {
        return set.newRowValue(field);
    }
    set.requireRow();
    return set.rows->value(field);
}

bool Recordset::isNull(std::u16string_view name) const {
    return ado::isNull(value(name));
}

std::u16string Recordset::text(std::u16string_view name) const {
    std::u16string out;
    text(fieldIndex(name), out);
    return out;
}

bool Recordset::text(std::size_t field, std::u16string& out) const {
    Impl& set = open();
    const FieldType type = set.requireField(field).type;
    const bool stored = set.editing != Impl::Editing::NewRow && set.findPending(field) == nullptr;
    if (stored && (type == FieldType::Text || type == FieldType::Memo)) {
        set.requireRow();
        if (!set.rows->text(field, out)) {
            out.clear();
            return false;
        }
        return true;
    }
    const Value shown = value(field);
    out = toText(shown);
    return !ado::isNull(shown);
}

void Recordset::set(std::size_t field, Value value) {
    Impl& set = open();
    const FieldInfo& info = set.requireField(field);
    set.requireChangeable();
    if (!info.writable) {
        throw Error(Error::Kind::Refused,
                    set.shown() + ": field " + platform::toUtf8(info.name) + " cannot be written");
    }
    if (set.editing == Impl::Editing::None) {
        set.requireRow();
        set.editing = Impl::Editing::Row;
    }
    if (FieldChange* change = set.findPending(field)) {
        change->value = std::move(value);
    } else {
        set.pending.push_back({field, std::move(value)});
    }
}

} // namespace kelb::ado
