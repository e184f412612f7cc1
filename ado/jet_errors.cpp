#include "ado/jet_errors.h"

#include "jet/error.h"
#include "platform/file_error.h"
#include "platform/utf8.h"

#include <string>

namespace kelb::ado {

namespace {

constexpr std::size_t kShownStatement = 200; ///< characters

using Jet = jet::Error::Kind;

Error::Kind kindOf(Jet kind) noexcept {
    switch (kind) {
    case Jet::NotADatabase:
    case Jet::Encrypted:
    case Jet::PasswordProtected:
    case Jet::InUse:
        return Error::Kind::Connection;
    case Jet::UnsupportedVersion:
    case Jet::ReadOnly:
        return Error::Kind::ReadOnly;
    case Jet::NoSuchTable:
        return Error::Kind::NoSuchTable;
    case Jet::NoSuchColumn:
        return Error::Kind::NoSuchColumn;
    case Jet::DuplicateKey:
        return Error::Kind::DuplicateKey;
    case Jet::NullNotAllowed:
        return Error::Kind::NullNotAllowed;
    case Jet::FieldTooSmall:
        return Error::Kind::FieldTooSmall;
    case Jet::TypeMismatch:
        return Error::Kind::TypeMismatch;
    case Jet::RowDeleted:
        return Error::Kind::RowDeleted;
    case Jet::Corrupt:
        return Error::Kind::Damaged;
    case Jet::AlreadyExists:
    case Jet::BadName:
    case Jet::BadDefinition:
    case Jet::RecordTooLarge:
    case Jet::KeyNotPossible:
    case Jet::TooManyFields:
    case Jet::FileFull:
        break;
    }
    return Error::Kind::Refused;
}

std::string message(const Doing& doing, const std::string& reason) {
    const std::string database = platform::toUtf8(doing.database);
    std::string text = "cannot " + std::string(doing.action);
    if (!doing.table.empty()) {
        text += " " + platform::toUtf8(doing.table);
    }
    if (!database.empty() && reason.find(database) == std::string::npos) {
        text += " (" + database + ")";
    }
    text += ": " + reason;
    if (!doing.statement.empty()) {
        const bool cut = doing.statement.size() > kShownStatement;
        text += "; statement: " + platform::toUtf8(doing.statement.substr(0, kShownStatement)) + (cut ? "…" : "");
    }
    for (char& c : text) { // one line, whatever the statement holds
        c = c == '\n' || c == '\r' ? ' ' : c;
    }
    return text;
}

} // namespace

void rethrowAsError(const Doing& doing) {
    try {
        throw;
    } catch (const jet::Error& error) {
        throw Error(kindOf(error.kind()), message(doing, error.what()));
    } catch (const platform::FileError& error) {
        throw Error(Error::Kind::Io, message(doing, error.what()));
    } catch (const Error& error) {
        throw Error(error.kind(), message(doing, error.what()), error.state());
    }
}

} // namespace kelb::ado
