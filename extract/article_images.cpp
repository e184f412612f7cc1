// The images of Cls4Article's bodies.

#include "extract/Cls4Article.h"

#include "ado/recordset.h"
#include "extract/Prog_Kelb.h"
#include "extract/image_tags.h"
#include "platform/code_page.h"
#include "platform/file_system.h"
#include "platform/letter_case.h"
#include "platform/path_map.h"
#include "platform/text.h"

namespace kelb::extract {

namespace {

constexpr std::u16string_view kLeftBracket = u"左尖quorra括号";
constexpr std::u16string_view kRightBracket = u"右尖quorra括号";
constexpr std::u16string_view kStoredFolder = u"D:\\KelbFolder";
constexpr std::u16string_view kWebFolder = u"D:\\wwwroot\\imgs\\wxQiChe";
constexpr std::u16string_view kLogFile = u"\\TestRec\\ImgSrcChanger没有查询到的图片.txt";

constexpr std::size_t kShortestTag = 15;
constexpr std::size_t kShortestAddress = 11;
constexpr std::size_t kAddressEnd = 1025; // the first length that is too long

/// The value behind "src=", which ends at `value` + its own closing sign; no value when that is missing.
std::optional<std::u16string_view> attributeValue(std::u16string_view tag, std::size_t value) {
    const char16_t quote = value < tag.size() ? tag[value] : u'\0';
    std::size_t end;
    if (quote == u'"' || quote == u'\'') {
        end = tag.find(quote, ++value);
    } else {
        end = tag.find(u' ', value);
        if (end == tag.npos) {
            end = tag.find(u'>', value);
        }
    }
    return end == tag.npos ? std::nullopt : std::optional(tag.substr(value, end - value));
}

bool isImageAddress(std::u16string_view address) {
    return address.find(u"\r\n") == address.npos && address.starts_with(u"http://") &&
           platform::findNoCase(address, u"javascript:") == address.npos && address.size() >= kShortestAddress &&
           address.size() < kAddressEnd;
}

/// Copies the image to the web folder. Result: its path there.
std::u16string publish(const std::u16string& stored, platform::FileSystem& files) {
    std::u16string web = platform::replaceAll(stored, kStoredFolder, kWebFolder);
    if (web != stored) {
        files.makeFolders(platform::parentFolder(web));
        files.writeFile(web, files.readFile(stored));
    }
    return web;
}

/// What one image tag becomes.
std::u16string imageText(std::u16string_view address, const Cls4Article::ImageStore& store) {
    platform::FileSystem& files = store.platform.files;
    const auto note = [&](std::u16string_view text, std::u16string_view mark) {
        std::u16string line = u"<img src=\"";
        line.append(address).append(u"\">").append(mark).append(u"\r\n");
        files.appendFile(store.platform.applicationFolder + std::u16string(kLogFile), platform::encode936(line));
        return std::u16string(text);
    };
    ado::Recordset found;
    found.Open(u"select * from URLsPIC where url='" + platform::quoted(address) + u"'", store.pictures,
               ado::CursorType::Keyset, ado::LockType::ReadOnly);
    if (found.Eof()) {
        return note(u"<br>无图片51<br>", u"xxxxxxxxxxxxxxxxxx");
    }
    const std::u16string path = found.text(u"filepath");
    if (path.empty() || !files.fileExists(path)) {
        return note(u"<br>无图片52<br>", u"yyyyyyyyyyyyyyyy");
    }
    return std::u16string(kLeftBracket).append(u"img src=").append(publish(path, files)).append(kRightBracket);
}

} // namespace

std::u16string Cls4Article::ImgSrcRecover(std::u16string_view text) {
    std::u16string recovered = platform::replaceAll(text, kLeftBracket, u"<");
    platform::replaceAllIn(recovered, kRightBracket, u">");
    return recovered;
}

std::u16string Cls4Article::ImgSrcChanger(std::u16string& html, std::u16string_view pageUrl, const ImageStore& store) {
    html = replaceImageTags(html, [&](std::u16string_view tag) {
        std::u16string text = imageText(getImgSrc(tag, pageUrl), store);
        store.events.yield();
        return text;
    });
    return html;
}

std::u16string Cls4Article::getTagIMG(std::u16string_view html) {
    const auto tag = findImageTag(html);
    return tag ? std::u16string(html.substr(tag->begin, tag->end - tag->begin)) : std::u16string();
}

std::u16string Cls4Article::getImgSrc(std::u16string_view tag, std::u16string_view pageUrl) {
    constexpr std::u16string_view kAttribute = u"src=";
    if (tag.size() < kShortestTag) {
        return {};
    }
    const std::size_t attribute = Prog_Kelb::InStrNoCase(1, tag, kAttribute);
    if (attribute == 0) {
        return {};
    }
    const auto value = attributeValue(tag, attribute - 1 + kAttribute.size());
    if (!value) {
        return {};
    }
    std::u16string address = Prog_Kelb::getFullURL(pageUrl, *value);
    return isImageAddress(address) ? address : std::u16string();
}

} // namespace kelb::extract
