#pragma once

#include "rewrite/ClsSmart.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace kelb::extract {

/// The text operations of ClsSmart as Cls4Article offers them as well: each hands on to that one implementation, where
/// they are described. killTag is not among them, because Cls4Article has one of its own.
class SmartTexts {
public:
    /// Gives the program's ClsSmart, so that its memory is one; asked by blnValue and rndTVCode only, since it cannot
    /// be made without its file of ad marks.
    using Smart = std::function<rewrite::ClsSmart&()>;
    explicit SmartTexts(Smart smart) : smart_(std::move(smart)) {}

    static std::u16string killURLText(std::u16string_view text) { return rewrite::ClsSmart::killURLText(text); }
    static bool replaceGarbage(std::u16string_view text, std::u16string& cleaned, std::u16string& log) {
        return rewrite::ClsSmart::replaceGarbage(text, cleaned, log);
    }
    static bool replaceGarbageTags(std::u16string_view text, std::u16string& cleaned, std::u16string& log) {
        return rewrite::ClsSmart::replaceGarbageTags(text, cleaned, log);
    }
    static bool replaceGarbageTag(std::u16string_view text, std::u16string& cleaned, std::u16string& log,
                                  std::u16string_view opening, std::u16string_view closing) {
        return rewrite::ClsSmart::replaceGarbageTag(text, cleaned, log, opening, closing);
    }
    static std::u16string killMoreBR(std::u16string_view text) { return rewrite::ClsSmart::killMoreBR(text); }
    static std::u16string cutTitle(std::u16string_view text, std::u16string_view separator) {
        return rewrite::ClsSmart::cutTitle(text, separator);
    }
    static std::int16_t CountGoodChar(std::u16string_view text) { return rewrite::ClsSmart::CountGoodChar(text); }
    bool blnValue(std::u16string_view text, std::u16string& sReason) const { return smart_().blnValue(text, sReason); }
    static bool blnValue2(std::u16string_view text) { return rewrite::ClsSmart::blnValue2(text); }
    static std::u16string smartRead() { return rewrite::ClsSmart::smartRead(); }

    static std::u16string smartReplaceTitle(std::u16string_view title) {
        return rewrite::ClsSmart::smartReplaceTitle(title);
    }
    static std::u16string smartReplaceContent(std::u16string_view text, std::u16string_view brand) {
        return rewrite::ClsSmart::smartReplaceContent(text, brand);
    }
    static std::u16string smartReplaceNormal(std::u16string_view text, std::u16string_view brand) {
        return rewrite::ClsSmart::smartReplaceNormal(text, brand);
    }
    static std::u16string getPinPai(std::u16string_view text) { return rewrite::ClsSmart::getPinPai(text); }
    static bool blnChangHong(std::u16string_view text) { return rewrite::ClsSmart::blnChangHong(text); }
    static std::u16string searchTVCode(std::u16string_view text) { return rewrite::ClsSmart::searchTVCode(text); }
    static std::u16string searchICCode(std::u16string_view code) { return rewrite::ClsSmart::searchICCode(code); }
    static std::u16string replaceTVCode(std::u16string_view text, std::u16string_view brand) {
        return rewrite::ClsSmart::replaceTVCode(text, brand);
    }
    static std::u16string smartGetProblem(std::u16string_view text) { return rewrite::ClsSmart::smartGetProblem(text); }
    static bool learnTVCode(ado::Connection& database, std::u16string_view code, std::u16string& mom,
                            std::u16string& dad) {
        return rewrite::ClsSmart::learnTVCode(database, code, mom, dad);
    }
    static std::u16string extRepairKW(ado::Connection& database, std::u16string_view text) {
        return rewrite::ClsSmart::extRepairKW(database, text);
    }
    std::u16string rndTVCode(std::u16string_view path, platform::Random& random) const {
        return smart_().rndTVCode(path, random);
    }

private:
    Smart smart_;
};

} // namespace kelb::extract
