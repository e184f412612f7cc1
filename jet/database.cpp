#include "jet/database.h"

#include "jet/database_state.h"
#include "jet/empty_database.h"
#include "jet/journal.h"
#include "jet/table_environment.h"

#include "platform/clock.h"
#include "platform/date_time.h"
#include "platform/file_failures.h"
#include "platform/letter_case.h"
#include "platform/memory_file_system.h"
#include "platform/utf8.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace kelb::jet {

namespace {

using platform::toUtf8;

std::unique_ptr<platform::RandomAccessFile> openLocked(platform::FileSystem& files, std::u16string_view path,
                                                       bool forWriting) {
    try {
        return files.open(path, forWriting ? platform::OpenMode::ReadWrite : platform::OpenMode::Read);
    } catch (const platform::FileError& error) {
        if (error.kind() != platform::FileError::Kind::Locked)
            throw;
        throw Error(Error::Kind::InUse, toUtf8(path) + " is open in another program; close it there and run again");
    }
}

/// Access keeps such a file beside a database that somebody has open.
void requireNoLockFile(platform::FileSystem& files, std::u16string_view path) {
    const std::size_t dot = path.rfind(u'.');
    const std::size_t slash = path.find_last_of(u"/\\");
    const bool extended = dot != path.npos && (slash == path.npos || dot > slash);
    for (const std::u16string_view extension : {u".ldb", u".laccdb"}) {
        const std::u16string lockFile = std::u16string(path.substr(0, extended ? dot : path.npos)).append(extension);
        if (files.fileExists(lockFile))
            throw Error(Error::Kind::InUse, toUtf8(path) + " is in use by Access: " + toUtf8(lockFile) +
                                                " lies beside it; close Access and run again, or use --force when it "
                                                "is left over from a crash");
    }
}

FileHeader readHeader(const platform::RandomAccessFile& file, std::u16string_view path) {
    std::array<std::byte, kHeaderFront> front{};
    const std::size_t got = file.readAt(0, front);
    FileHeader header = readFileHeader(std::span(front).first(got), path);
    if (file.size() < header.pageSize())
        throw Error(Error::Kind::NotADatabase, toUtf8(path) + " is too short for an Access database");
    return header;
}

void requireWritable(const FileHeader& header, std::u16string_view path) {
    if (header.dialect != Dialect::Jet4)
        throw Error(Error::Kind::UnsupportedVersion,
                    toUtf8(path) + " is a database of Access " +
                        (header.dialect == Dialect::Jet3 ? "97" : "2007 or later") +
                        ": it can be read but not written; convert it to the Access 2000 format first");
    if (!header.standardMaps)
        throw CorruptFile(path, PageNumber{0}, 0x18, "the map of free pages is not where every Access database has it");
}

std::string describe(const CatalogEntry& entry) {
    switch (static_cast<ObjectType>(entry.type)) {
    case ObjectType::OdbcLink:
    case ObjectType::Link:
        return "is a link to a table of another database; open that one";
    case ObjectType::Query:
        return "is a query, not a table";
    default:
        return "is not a table";
    }
}

} // namespace

Database::State::State(platform::Platform& environment, std::u16string_view path, const FileHeader& fileHeader,
                       std::unique_ptr<platform::RandomAccessFile> file, Pager::Access access)
    : platform(environment), header(fileHeader),
      pager(environment.files, environment.clock, std::u16string(path), std::move(file),
            {.access = access, .pageSize = fileHeader.pageSize()}),
      allocator(pager), objects(makeTable(u"MSysObjects", kObjectsPage, false)),
      rights(makeTable(u"MSysACEs", kRightsPage, false)), catalog(pager, *objects, *rights) {}

std::unique_ptr<Table> Database::State::makeTable(std::u16string_view name, PageNumber page, bool hasProperties) {
    std::function<void(TableDefinition&)> applyProperties;
    if (hasProperties)
        applyProperties = [this](TableDefinition& table) {
            try {
                const Properties properties = catalog.properties(table.page);
                for (Column& column : table.columns)
                    column.required = properties.isRequired(column.name);
            } catch (const Error& damage) {
                // Only what may be written needs to know which columns are required; reading must not fail over that.
                if (damage.kind() != Error::Kind::Corrupt || pager.access() != Pager::Access::Read)
                    throw;
            }
        };
    return std::make_unique<Table>(std::make_unique<Table::Environment>(
        Table::Environment{pager, allocator, platform.random, header.dialect, header.codePage, std::u16string(name),
                           page, schemaVersion, std::move(applyProperties)}));
}

Table& Database::State::tableAt(std::u16string_view name, PageNumber page) {
    const auto found = std::find_if(tables.begin(), tables.end(), [&](const OpenTable& open) {
        return open.page == page && platform::equalNoCase(open.name, name);
    });
    if (found != tables.end())
        return *found->table;
    tables.push_back({std::u16string(name), page, makeTable(name, page, true)});
    return *tables.back().table;
}

OleDate Database::State::now() const {
    return {platform::toSerial(platform.clock.now())};
}

void Database::State::noteSchemaChange() {
    ++schemaVersion;
    catalog.forget();
}

std::unique_ptr<Database> Database::open(platform::Platform& platform, std::u16string_view path, OpenOptions options) {
    const bool writes = options.access == Pager::Access::Write;
    std::unique_ptr<platform::RandomAccessFile> file = openLocked(platform.files, path, writes);
    if (writes) {
        if (!options.ignoreLockFile)
            requireNoLockFile(platform.files, path);
        recover(platform.files, path, *file, kPageSize); // the only one that is ever written
    }
    const FileHeader header = readHeader(*file, path);
    if (options.access != Pager::Access::Read)
        requireWritable(header, path);
    auto state = std::make_unique<State>(platform, path, header, std::move(file), options.access);
    state->catalog.objects(); // a file without a readable catalog is refused here
    return std::unique_ptr<Database>(new Database(std::move(state)));
}

std::unique_ptr<Database> Database::create(platform::Platform& platform, std::u16string_view path,
                                           const NewDatabase& options) {
    if (platform.files.fileExists(path))
        throw platform::alreadyThere("create database", path);
    // Made in memory and put in place whole, so that a kill leaves no half of a database under the wanted name.
    platform::MemoryFileSystem memory;
    const std::u16string name = u"new.mdb";
    {
        Pager pager(memory, platform.clock, name, memory.open(name, platform::OpenMode::CreateNew),
                    {.access = Pager::Access::Write});
        PageAllocator allocator(pager);
        Pager::Operation operation(pager);
        writeEmptyDatabase(pager, allocator, platform.random,
                           {.created = {platform::toSerial(platform.clock.now())},
                            .sortOrder = options.sortOrder,
                            .codePage = options.codePage});
        operation.done();
        pager.commit();
    }
    if (platform.files.fileExists(journalPath(path)))
        platform.files.removeFile(journalPath(path)); // of a database that was deleted
    platform.files.replaceFile(path, memory.readFile(name));
    return open(platform, path, {.access = Pager::Access::Write});
}

Database::Database(std::unique_ptr<State> state) : state_(std::move(state)) {}
Database::~Database() = default;

const std::u16string& Database::path() const noexcept {
    return state_->pager.path();
}

Dialect Database::dialect() const noexcept {
    return state_->header.dialect;
}

bool Database::writable() const noexcept {
    return state_->pager.access() != Pager::Access::Read;
}

std::uint16_t Database::codePage() const noexcept {
    return state_->header.codePage;
}

SortOrder Database::sortOrder() const noexcept {
    return state_->header.sortOrder;
}

std::vector<CatalogEntry> Database::catalog() const {
    std::vector<CatalogEntry> entries;
    for (const CatalogObject& object : state_->catalog.objects())
        entries.push_back(object.entry);
    return entries;
}

bool Database::hasTable(std::u16string_view name) const {
    const CatalogObject* object = state_->catalog.find(name);
    return object != nullptr && object->entry.type == static_cast<std::int16_t>(ObjectType::Table);
}

Table& Database::table(std::u16string_view name) {
    const CatalogObject* object = state_->catalog.find(name);
    if (object == nullptr)
        throw Error(Error::Kind::NoSuchTable, "there is no table " + toUtf8(name) + " in " + toUtf8(path()));
    if (object->entry.type != static_cast<std::int16_t>(ObjectType::Table))
        throw Error(Error::Kind::NoSuchTable, toUtf8(name) + " in " + toUtf8(path()) + " " + describe(object->entry));
    return state_->tableAt(object->entry.name, PageNumber{static_cast<std::uint32_t>(object->entry.id)});
}

void Database::beginTransaction() {
    state_->pager.beginTransaction();
}

void Database::commitTransaction() {
    state_->pager.commitTransaction();
}

void Database::rollbackTransaction() {
    state_->pager.rollbackTransaction();
}

void Database::commit() {
    state_->pager.commit();
}

void Database::commitIfDue() {
    state_->pager.commitIfDue();
}

Pager& Database::pager() noexcept {
    return state_->pager;
}

PageAllocator& Database::allocator() noexcept {
    return state_->allocator;
}

} // namespace kelb::jet
