#pragma once

#include "platform/file_system.h"
#include "platform/letter_case.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

/// Reads the settings file. Values come out as the system's profile service and the conversion around it give them,
/// oddities included. Nothing is ever written: the user edits the file by hand.
namespace kelb::app::RWIni {

/// A settings file, read once. Names of sections and keys count without regard to case; the first of two equal keys
/// wins.
class IniFile {
public:
    /// Reads the file in code page 936; one that is missing holds nothing. Throws FileError when it cannot be read.
    IniFile(platform::FileSystem& files, std::u16string_view path);

    /// The value, "" when section or key is missing. An empty section means "Setup".
    std::u16string ReadIni(std::u16string_view sKey, std::u16string_view sSection) const;
    /// Keys and values of a section in the order of the file.
    std::vector<std::pair<std::u16string, std::u16string>> section(std::u16string_view name) const;

private:
    struct Section {
        std::vector<std::pair<std::u16string, std::u16string>> entries; ///< values as the file has them
        std::unordered_map<std::u16string, std::size_t, platform::NoCaseHash, platform::NoCaseEqual> byKey;
    };

    void parse(std::u16string_view text);
    const Section* find(std::u16string_view name) const;

    std::unordered_map<std::u16string, Section, platform::NoCaseHash, platform::NoCaseEqual> sections_;
};

/// One value. An empty file name means "Kelb.ini" in the application folder; otherwise as IniFile.
[[nodiscard]] std::u16string ReadIni(std::u16string_view sKey, std::u16string_view sSection,
                                     std::u16string_view sIniFile, platform::FileSystem& files,
                                     std::u16string_view applicationFolder);

} // namespace kelb::app::RWIni
