#include "cli/commands.h"
#include "jobs/configuration.h"
#include "platform/utf8.h"

#include <iostream>

namespace kelb::cli {
namespace {

using jobs::SettingInfo;

constexpr const char* kIntroduction =
    "# Settings: `Kelb.ini`\n"
    "\n"
    "Printed by `kelb settings --markdown` from the program's own table; a test compares the two. `kelb settings` "
    "prints\n"
    "the same as a file to fill in: `kelb settings | iconv -t gbk >Kelb.ini`.\n"
    "\n"
    "`Kelb.ini` lies in the application folder (`--home`, else `KELB_HOME`, else the folder of the program); `--ini "
    "FILE`\n"
    "names another one. It is a text in code page 936 (GBK): sections in brackets, a line `key=value` for each value, "
    "a\n"
    "comment behind `;` at the beginning of a line. A value of more than 511 bytes is cut; quotation marks around it "
    "are\n"
    "taken off; names of sections and keys count in any letter case. The program only reads the file. What an option "
    "of\n"
    "the command line names goes before the setting, the setting before the default.\n"
    "\n"
    "Paths are written as on the machine that crawled (`D:\\forum.mdb`) or as on this one (`/crawl/forum.mdb`); "
    "`[Drives]`\n"
    "and `[Shares]` say what a drive letter or a share stands for here. Keys with numbers are read from 1 on; numbers "
    "may\n"
    "be left out.\n";

/// A key as it is written in the file, or the first and the last one of several.
std::string keys(const SettingInfo& info, std::string_view quote) {
    const std::string key = platform::toUtf8(info.key);
    const auto quoted = [quote](const std::string& text) { return std::string(quote) + text + std::string(quote); };
    switch (info.shape) {
    case SettingInfo::Shape::Letters:
        return quoted("A") + " … " + quoted("Z");
    case SettingInfo::Shape::Numbered:
    case SettingInfo::Shape::Rows:
        return quoted(key + "1") + " … " + quoted(key + std::to_string(info.count));
    case SettingInfo::Shape::Text:
    case SettingInfo::Shape::Number:
        break;
    }
    return quoted(key);
}

std::string escapedForMarkdown(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '\\' || c == '|' || c == '<' || c == '*' || c == '_') {
            escaped += '\\';
        }
        escaped += c;
    }
    return escaped;
}

void writeMarkdown(std::ostream& out) {
    out << kIntroduction;
    std::u16string_view section;
    for (const SettingInfo& info : jobs::settingTable()) {
        if (info.section != section) {
            section = info.section;
            out << "\n## [" << platform::toUtf8(section) << "]\n\n| key | default | meaning |\n|---|---|---|\n";
        }
        const std::string fallback = platform::toUtf8(info.fallback);
        out << "| " << keys(info, "`") << " | " << (fallback.empty() ? "" : "`" + fallback + "` ") << "| "
            << escapedForMarkdown(info.meaning) << " |\n";
    }
}

/// The key that a line of the template carries: of several the first.
std::string firstKey(const SettingInfo& info) {
    switch (info.shape) {
    case SettingInfo::Shape::Letters:
        return "D";
    case SettingInfo::Shape::Numbered:
    case SettingInfo::Shape::Rows:
        return platform::toUtf8(info.key) + "1";
    case SettingInfo::Shape::Text:
    case SettingInfo::Shape::Number:
        break;
    }
    return platform::toUtf8(info.key);
}

void writeTemplate(std::ostream& out) {
    out << "; Take the \";\" in front of a key away to set it. Save this file in code page 936 (GBK).\n";
    std::u16string_view section;
    for (const SettingInfo& info : jobs::settingTable()) {
        if (info.section != section) {
            section = info.section;
            out << "\n[" << platform::toUtf8(section) << "]\n";
        }
        const std::string first = firstKey(info), all = keys(info, "");
        out << "; " << info.meaning << (all == first ? "" : " (" + all + ")") << "\n;" << first << '='
            << platform::toUtf8(info.fallback) << '\n';
    }
}

class SettingsCommand final : public Command {
public:
    explicit SettingsCommand(CLI::App& kelb)
        : Command(kelb.add_subcommand("settings", "Print every setting of Kelb.ini with its default and its meaning")) {
        declared().add_flag("--markdown", markdown_, "As the page docs/settings.md");
        declared().footer("What is printed serves as a Kelb.ini to fill in; that file is read in code page 936.\n"
                          "Example:\n"
                          "  kelb settings | iconv -t gbk >Kelb.ini");
    }

    int run(Program& /*program*/) override {
        if (markdown_) {
            writeMarkdown(std::cout);
        } else {
            writeTemplate(std::cout);
        }
        return kDone;
    }

private:
    bool markdown_ = false;
};

} // namespace

CommandPointer makeSettings(CLI::App& kelb) {
    return std::make_unique<SettingsCommand>(kelb);
}

} // namespace kelb::cli
