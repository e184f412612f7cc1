#pragma once

#include "platform/utf8.h"

#include <filesystem>
#include <random>
#include <string>

namespace kelb::platform {

/// A folder of its own in the system's temporary folder, removed with all that lies in it.
class TemporaryFolder {
public:
    explicit TemporaryFolder(const std::filesystem::path& parent = std::filesystem::temp_directory_path()) {
        std::random_device entropy;
        do {
            native_ = parent / ("kelb-test-" + std::to_string(entropy()));
        } while (!std::filesystem::create_directory(native_)); // throws where none can be made
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(native_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& native() const { return native_; }
    std::u16string path() const { return fromUtf8(native_.string()); }

private:
    std::filesystem::path native_;
};

} // namespace kelb::platform
