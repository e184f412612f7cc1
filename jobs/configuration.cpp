#include "jobs/configuration.h"

#include "jobs/job_error.h"
#include "platform/text.h"
#include "platform/utf8.h"

#include <cassert>
#include <charconv>
#include <optional>

namespace kelb::jobs {
namespace {

using Shape = SettingInfo::Shape;

std::size_t index(Setting setting) {
    return static_cast<std::size_t>(setting);
}

std::optional<long> wholeNumber(std::u16string_view text) {
    const std::string digits = platform::toUtf8(platform::trimBlanks(text));
    long value = 0;
    const auto [stop, fault] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (fault != std::errc() || stop != digits.data() + digits.size() || value < 0 || value > 1'000'000'000) {
        return std::nullopt;
    }
    return value;
}

} // namespace

std::string settingName(Setting setting) {
    const SettingInfo& info = settingInfo(setting);
    std::string name = "[" + platform::toUtf8(info.section) + "] ";
    if (info.shape == Shape::Letters) {
        return name + "X";
    }
    return name + platform::toUtf8(info.key) + (info.shape == Shape::Numbered || info.shape == Shape::Rows ? "1" : "");
}

Configuration::Configuration()
    : Configuration([](std::u16string_view, std::u16string_view) { return std::u16string(); }) {}

Configuration::Configuration(const Reader& read) {
    for (const SettingInfo& info : settingTable()) {
        switch (info.shape) {
        case Shape::Text:
        case Shape::Number: {
            std::u16string value = read(info.section, info.key);
            values_[index(info.setting)].push_back(value.empty() ? std::u16string(info.fallback) : std::move(value));
            break;
        }
        case Shape::Numbered:
        case Shape::Rows:
            readNumbered(info, read);
            break;
        case Shape::Letters:
            readDrives(info, read);
            break;
        }
    }
    readShares();
    check();
}

void Configuration::readNumbered(const SettingInfo& info, const Reader& read) {
    std::vector<std::u16string>& values = values_[index(info.setting)];
    for (std::size_t i = 1; i <= info.count; ++i) {
        std::u16string value = read(info.section, std::u16string(info.key) + platform::number(static_cast<long>(i)));
        if (info.shape == Shape::Rows || !value.empty()) {
            values.push_back(std::move(value)); // an empty fragment would match everything
        }
    }
    if (values.empty() && !info.fallback.empty()) {
        values.emplace_back(info.fallback);
    }
}

void Configuration::readDrives(const SettingInfo& info, const Reader& read) {
    for (char16_t letter = u'A'; letter <= u'Z'; ++letter) {
        const std::u16string key(1, letter);
        std::u16string folder = read(info.section, key);
        if (!folder.empty()) {
            pathMap_.drives.push_back({key, std::move(folder)});
        }
    }
}

void Configuration::readShares() {
    for (const std::u16string& share : texts(Setting::Shares)) {
        const std::size_t bar = share.find(u'|');
        if (bar == std::u16string::npos || bar == 0 || bar + 1 == share.size()) {
            throw SettingError(settingName(Setting::Shares) + " and the like: \"" + platform::toUtf8(share) +
                               "\" is not of the form \\\\host\\share|folder");
        }
        pathMap_.shares.push_back({share.substr(0, bar), share.substr(bar + 1)});
    }
}

void Configuration::check() {
    for (const SettingInfo& info : settingTable()) {
        if (info.shape == Shape::Number && !wholeNumber(text(info.setting))) {
            throw SettingError(settingName(info.setting) + ": \"" + platform::toUtf8(text(info.setting)) +
                               "\" is not a number");
        }
    }
    const auto encoding = platform::parsePageEncoding(text(Setting::SetupPageEncoding));
    if (!encoding) {
        throw SettingError(settingName(Setting::SetupPageEncoding) + ": \"" +
                           platform::toUtf8(text(Setting::SetupPageEncoding)) + "\" is none of auto, 936, utf-8");
    }
    pageEncoding_ = *encoding;
}

const std::u16string& Configuration::text(Setting setting) const {
    assert(settingInfo(setting).shape == Shape::Text || settingInfo(setting).shape == Shape::Number);
    return values_[index(setting)].front();
}

const std::u16string& Configuration::required(Setting setting) const {
    const std::u16string& value = text(setting);
    if (value.empty()) {
        throw SettingError("the setting " + settingName(setting) + " is missing (" +
                           std::string(settingInfo(setting).meaning) + "); set it in Kelb.ini");
    }
    return value;
}

const std::vector<std::u16string>& Configuration::texts(Setting setting) const {
    assert(settingInfo(setting).shape == Shape::Numbered || settingInfo(setting).shape == Shape::Rows);
    return values_[index(setting)];
}

long Configuration::number(Setting setting) const {
    assert(settingInfo(setting).shape == Shape::Number);
    return *wholeNumber(text(setting)); // checked when it was read
}

} // namespace kelb::jobs
