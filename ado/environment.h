#pragma once

#include "ado/provider.h"
#include "jet/database.h"

#include "platform/platform.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::ado {

class SharedDatabase;

/// What a connection means to do with a database.
enum class AccessWish {
    Read,
    WriteIfPossible, ///< falls back to reading; SharedDatabase knows why
    Write
};

/// What every connection of one program run shares: the providers and the open databases (two connections to one file
/// share one engine, so that each sees the other's rows at once). Outlives its connections.
class Environment {
public:
    struct Options {
        bool dryRun = false;         ///< databases are changed in a temporary overlay only
        bool ignoreLockFile = false; ///< --force
    };
    Environment(platform::Platform& platform, Options options);
    ~Environment();

    platform::Platform& platform() const noexcept { return platform_; }
    const Options& options() const noexcept { return options_; }
    const std::vector<std::unique_ptr<Provider>>& providers() const noexcept { return providers_; }
    /// Providers added later are asked first.
    void add(std::unique_ptr<Provider> provider);

    /// The open database at this path, or opens it. When it is open for reading only and `access` is Write it is opened
    /// anew for writing when nobody else has it from here. Paths of one file (case, links, drive letters) give one
    /// object. Rows are changed through connections: their indexes and record sets do not see what is changed in it
    /// directly. Throws Error (Connection).
    std::shared_ptr<jet::Database> openDatabase(std::u16string_view path, jet::Pager::Access access);
    /// The same with the hash indexes and keysets that its connections share. Throws Error (Connection).
    std::shared_ptr<SharedDatabase> share(std::u16string_view path, AccessWish wish);
    /// Opens the database for reading again when it is open for writing and no connection that may write has it open
    /// any more: other programs can read it then. Record sets on it live on. Throws Error (Connection).
    void leaveToReaders(std::u16string_view path);
    /// Commits every database that is open.
    void flushAll();

private:
    std::shared_ptr<SharedDatabase> find(const std::string& identity);
    std::shared_ptr<SharedDatabase> open(std::u16string_view path, std::string identity, AccessWish wish);
    jet::Pager::Access accessFor(AccessWish wish) const noexcept;
    void makeWritable(SharedDatabase& database, AccessWish wish) const;

    platform::Platform& platform_;
    Options options_;
    std::vector<std::unique_ptr<Provider>> providers_;
    std::map<std::string, std::weak_ptr<SharedDatabase>> databases_; ///< by file identity
    /// Dry run: what was changed goes when the database is closed, so they all stay open to the end of the run.
    std::vector<std::shared_ptr<SharedDatabase>> kept_;
};

} // namespace kelb::ado
