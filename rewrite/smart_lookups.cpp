#include "rewrite/ClsSmart.h"

#include "ado/connection.h"
#include "ado/recordset.h"
#include "platform/text.h"
#include "platform/utf8.h"
#include "rewrite/set_code_list.h"

#include <stdexcept>

namespace kelb::rewrite {

using ado::CursorType;
using ado::LockType;

bool ClsSmart::learnTVCode(ado::Connection& database, std::u16string_view code, std::u16string& mom,
                           std::u16string& dad) {
    mom.clear();
    dad.clear();
    // The code goes in as it stands: a quote in it is the database's error, a "%" its wildcard. Kept.
    ado::Recordset rows;
    rows.Open(std::u16string(u"select * from wxTVCode where TVCode like '").append(code).append(u"'"), database,
              CursorType::Keyset, LockType::ReadOnly);
    if (rows.Eof()) {
        return false;
    }
    mom = rows.text(u"mom");
    dad = rows.text(u"dad");
    return true;
}

std::u16string ClsSmart::extRepairKW(ado::Connection& database, std::u16string_view text) {
    ado::Recordset rows;
    rows.Open(u"select * from wxKWs", database, CursorType::Keyset, LockType::ReadOnly);
    const std::size_t field = rows.fieldIndex(u"wd");
    std::u16string found;
    std::u16string keyword;
    for (; !rows.Eof(); rows.MoveNext()) {
        if (!rows.text(field, keyword)) {
            keyword.clear(); // Null reads as "", which every text contains
        }
        if (text.find(keyword) != text.npos) {
            found.append(u" ").append(keyword);
        }
    }
    return std::u16string(platform::trimBlanks(found));
}

std::u16string ClsSmart::rndTVCode(std::u16string_view path, platform::Random& random) {
    if (setCodes_.empty()) {
        random.reseed();
        setCodes_ = readSetCodes(files_, path);
    }
    if (setCodes_.empty()) {
        throw std::out_of_range("the file of set codes " + platform::toUtf8(path) +
                                " has no code: below a heading write codes of fewer than 12 characters");
    }
    // The factor is the last index, not the count: the last code is never drawn. Kept.
    const auto lastIndex = static_cast<double>(setCodes_.size() - 1);
    return setCodes_[static_cast<std::size_t>(random.next() * lastIndex)];
}

} // namespace kelb::rewrite
