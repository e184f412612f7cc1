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
    /// anew for writing when nobody else uses it. Paths of one file (case, links, drive letters) give one object.
    std::shared_ptr<jet::Database> openDatabase(std::u16string_view path, jet::Pager::Access access);
    /// Commits every database that is open.
    void flushAll();

private:
    platform::Platform& platform_;
    Options options_;
    std::vector<std::unique_ptr<Provider>> providers_;
    std::map<std::string, std::weak_ptr<jet::Database>> databases_; ///< by file identity
};

} // namespace kelb::ado
