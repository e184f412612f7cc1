#pragma once

#include "jet/database.h"

#include "platform/platform.h"

#include <memory>
#include <string>
#include <string_view>

namespace kelb::jet {

/// A database that is put together beside its name, under that name with ".part" behind it, and gets the name when it
/// is whole: a kill leaves no half of one. Given up, it leaves nothing.
class NewDatabaseFile {
public:
    /// Throws FileError (AlreadyExists) when something is at `path`, (Locked) when another program is putting together
    /// the same one; what a killed one left of it is thrown away.
    NewDatabaseFile(platform::Platform& platform, std::u16string_view path, const NewDatabase& options);
    ~NewDatabaseFile();
    NewDatabaseFile(const NewDatabaseFile&) = delete;
    NewDatabaseFile& operator=(const NewDatabaseFile&) = delete;

    Database& database() noexcept { return *database_; } ///< until finish()
    /// Verifies what has reached the file and gives it its name. Throws Error (Corrupt) with the first fault,
    /// FileError; nothing is then at the path.
    void finish();

private:
    platform::Platform& platform_;
    std::u16string path_, part_;
    std::unique_ptr<Database> database_;
};

} // namespace kelb::jet
