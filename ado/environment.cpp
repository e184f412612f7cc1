#include "ado/environment.h"

#include "ado/error.h"
#include "ado/jet_provider.h"
#include "ado/odbc_provider.h"
#include "ado/shared_database.h"
#include "ado/sheet_provider.h"

#include "platform/utf8.h"

#include <exception>
#include <utility>

namespace kelb::ado {

namespace {

std::string shown(std::u16string_view path) {
    return platform::toUtf8(path);
}

[[noreturn]] void throwCannotOpen(std::u16string_view path, const std::string& reason) {
    const bool named = reason.find(shown(path)) != std::string::npos;
    throw Error(Error::Kind::Connection,
                "cannot open the database" + (named ? std::string() : " " + shown(path)) + ": " + reason);
}

/// Runs `open`; what the engine and the file system refuse becomes Error (Connection).
template <class Open>
auto opening(std::u16string_view path, Open&& open) {
    try {
        return open();
    } catch (const jet::Error& error) {
        throwCannotOpen(path, error.what());
    } catch (const platform::FileError& error) {
        throwCannotOpen(path, error.what());
    }
}

/// A database lent to somebody outside: keeps both the shared object and the fact that it is lent alive.
struct Loan {
    std::shared_ptr<SharedDatabase> shared;
    std::shared_ptr<jet::Database> database;
};

} // namespace

Environment::Environment(platform::Platform& platform, Options options) : platform_(platform), options_(options) {
    add(std::make_unique<OdbcProvider>());
    add(std::make_unique<JetProvider>());
    add(std::make_unique<SheetProvider>()); // before ODBC, which takes every Driver=
}

Environment::~Environment() = default;

void Environment::add(std::unique_ptr<Provider> provider) {
    providers_.push_back(std::move(provider));
}

jet::Pager::Access Environment::accessFor(AccessWish wish) const noexcept {
    if (options_.dryRun) { // readers too: they are to see what the run would have changed
        return jet::Pager::Access::Scratch;
    }
    return wish == AccessWish::Read ? jet::Pager::Access::Read : jet::Pager::Access::Write;
}

std::shared_ptr<SharedDatabase> Environment::find(const std::string& identity) {
    std::erase_if(databases_, [](const auto& entry) { return entry.second.expired(); });
    const auto found = databases_.find(identity);
    return found == databases_.end() ? nullptr : found->second.lock();
}

std::shared_ptr<SharedDatabase> Environment::share(std::u16string_view path, AccessWish wish) {
    return opening(path, [&] {
        if (!platform_.files.fileExists(path)) {
            throwCannotOpen(path, "there is no such file");
        }
        const std::string identity = platform_.files.identityOf(path);
        std::shared_ptr<SharedDatabase> shared = find(identity);
        if (shared == nullptr) {
            shared = open(path, identity, wish);
            databases_[identity] = shared;
            if (options_.dryRun) {
                kept_.push_back(shared);
            }
        } else if (wish != AccessWish::Read && !shared->writable()) {
            makeWritable(*shared, wish);
        }
        return shared;
    });
}

std::shared_ptr<SharedDatabase> Environment::open(std::u16string_view path, std::string identity, AccessWish wish) {
    const auto openAs = [&](jet::Pager::Access access) {
        return std::make_shared<SharedDatabase>(platform_, std::u16string(path), identity,
                                                jet::Database::OpenOptions{access, options_.ignoreLockFile});
    };
    const jet::Pager::Access access = accessFor(wish);
    std::string reason;
    try {
        std::shared_ptr<SharedDatabase> shared = openAs(access);
        if (shared->writable() || wish != AccessWish::Write) {
            return shared;
        }
        reason = "this kind of database is only read";
    } catch (const jet::Error& error) {
        reason = error.what();
    } catch (const platform::FileError& error) {
        reason = error.what();
    }
    if (wish == AccessWish::Write || access == jet::Pager::Access::Read) {
        throwCannotOpen(path, reason);
    }
    std::shared_ptr<SharedDatabase> shared = openAs(jet::Pager::Access::Read); // its failure tells more
    shared->setReadOnlyReason(reason);
    return shared;
}

/// A database that was opened for reading is wanted for writing as well.
void Environment::makeWritable(SharedDatabase& database, AccessWish wish) const {
    std::string reason = database.readOnlyReason();
    if (reason.empty() || wish == AccessWish::Write) {
        if (database.isHeld()) {
            reason = "it is in use for reading in this program";
        } else {
            try {
                database.reopen(accessFor(wish));
                return;
            } catch (const jet::Error& error) {
                reason = error.what();
            } catch (const platform::FileError& error) {
                reason = error.what();
            }
        }
    }
    database.setReadOnlyReason(reason);
    if (wish == AccessWish::Write) {
        throwCannotOpen(database.path(), reason);
    }
}

void Environment::leaveToReaders(std::u16string_view path) {
    opening(path, [&] {
        const std::shared_ptr<SharedDatabase> shared = find(platform_.files.identityOf(path));
        if (shared != nullptr && shared->writable() && !options_.dryRun && !shared->hasWriters() && !shared->isHeld()) {
            shared->database()->commit(); // reopening keeps no change that a connection could not bring to the disk
            shared->reopen(jet::Pager::Access::Read);
        }
    });
}

std::shared_ptr<jet::Database> Environment::openDatabase(std::u16string_view path, jet::Pager::Access access) {
    if (access == jet::Pager::Access::Scratch && !options_.dryRun) {
        throwCannotOpen(path, "changes are kept apart from the file in a dry run only");
    }
    const auto loan = std::make_shared<Loan>();
    loan->shared = share(path, access == jet::Pager::Access::Read ? AccessWish::Read : AccessWish::Write);
    loan->database = loan->shared->database();
    return {loan, loan->database.get()};
}

void Environment::flushAll() {
    for (const auto& entry : databases_) {
        if (const auto shared = entry.second.lock()) {
            opening(shared->path(), [&] { shared->database()->commit(); });
        }
    }
}

} // namespace kelb::ado
