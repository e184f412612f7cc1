#pragma once

#include "platform/file_system.h"
#include "tests/platform/temporary_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace kelb::platform {

/// The system's own files, in a folder that goes with the test.
class SystemFiles : public testing::Test {
protected:
    explicit SystemFiles(const std::function<PathMap(const TemporaryFolder&)>& map =
                             [](const auto&) { return PathMap(); })
        : files_(makeSystemFileSystem(map(folder_))) {}

    std::u16string at(std::u16string_view name) const { return joinPath(folder_.path(), name); }

    void put(const std::filesystem::path& name, std::string_view bytes = "") const {
        std::ofstream(folder_.native() / name, std::ios::binary) << bytes;
    }

    static FileError::Kind kindOf(const std::function<void()>& operation) {
        try {
            operation();
        } catch (const FileError& error) {
            message_ = error.what();
            return error.kind();
        }
        ADD_FAILURE() << "no error";
        return FileError::Kind::Other;
    }

    static inline std::string message_; ///< of the last error that kindOf saw
    TemporaryFolder folder_;
    std::unique_ptr<FileSystem> files_;
};

} // namespace kelb::platform
