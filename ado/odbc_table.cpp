#include "ado/odbc_table.h"

#include "platform/letter_case.h"

#include <algorithm>
#include <array>
#include <map>

namespace kelb::ado {

namespace {

using platform::equalNoCase;

/// A word of a SELECT in whatever dialect the server speaks.
struct Word {
    enum class Kind { Plain, Quoted, Symbol, End };
    Kind kind = Kind::End;
    std::u16string_view written; ///< quotes included
    std::u16string name;         ///< quotes undone
};

bool isBlank(char16_t unit) {
    return unit <= u' ' || unit == u'\u3000';
}

bool isWordUnit(char16_t unit) {
    constexpr std::u16string_view kOthers = u"_$#@";
    return (unit >= u'0' && unit <= u'9') || (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') ||
           kOthers.find(unit) != kOthers.npos || (unit >= 0x80 && !isBlank(unit));
}

/// Reads words; texts in apostrophes are passed over, since they name nothing.
class WordReader {
public:
    explicit WordReader(std::u16string_view text) : text_(text) {}

    Word next() {
        for (;;) {
            skipBlanksAndRemarks();
            if (at_ == text_.size()) {
                return {};
            }
            if (text_[at_] != u'\'') {
                break;
            }
            quoted(u'\'');
        }
        const char16_t unit = text_[at_];
        if (unit == u'"' || unit == u'`' || unit == u'[') {
            return quoted(unit == u'[' ? u']' : unit);
        }
        const std::size_t first = at_;
        while (at_ < text_.size() && isWordUnit(text_[at_])) {
            ++at_;
        }
        if (at_ == first) {
            ++at_;
            return {Word::Kind::Symbol, text_.substr(first, 1), {}};
        }
        const std::u16string_view written = text_.substr(first, at_ - first);
        return {Word::Kind::Plain, written, std::u16string(written)};
    }

private:
    void skipBlanksAndRemarks() {
        for (;;) {
            while (at_ < text_.size() && isBlank(text_[at_])) {
                ++at_;
            }
            const std::u16string_view rest = text_.substr(at_);
            const bool line = rest.starts_with(u"--");
            if (!line && !rest.starts_with(u"/*")) {
                return;
            }
            const std::size_t end = line ? rest.find(u'\n') : rest.find(u"*/", 2);
            at_ = end == rest.npos ? text_.size() : at_ + end + (line ? 1 : 2);
        }
    }

    Word quoted(char16_t closing) {
        Word word{Word::Kind::Quoted, {}, {}};
        const std::size_t first = at_++;
        for (; at_ < text_.size(); ++at_) {
            if (text_[at_] == closing) {
                ++at_;
                if (at_ == text_.size() || text_[at_] != closing) {
                    break;
                }
            }
            word.name += text_[at_];
        }
        word.written = text_.substr(first, at_ - first);
        return word;
    }

    std::u16string_view text_;
    std::size_t at_ = 0;
};

bool isAnyOf(const Word& word, std::span<const std::u16string_view> keywords) {
    return word.kind == Word::Kind::Plain && std::any_of(keywords.begin(), keywords.end(), [&](auto keyword) {
               return equalNoCase(keyword, word.written);
           });
}

bool isSymbol(const Word& word, char16_t symbol) {
    return word.kind == Word::Kind::Symbol && word.written.front() == symbol;
}

constexpr std::array<std::u16string_view, 1> kFrom{u"from"};
constexpr std::array<std::u16string_view, 1> kAs{u"as"};
constexpr std::array<std::u16string_view, 5> kEndOfTable{u"where", u"order", u"with", u"limit", u"option"};
constexpr std::array<std::u16string_view, 6> kOtherRows{u"distinct", u"group",     u"having",
                                                        u"union",    u"intersect", u"except"};

/// The words of a SELECT outside parentheses, up to one that parts its rows from those of a table.
bool readPlainWords(std::u16string_view select, std::vector<Word>& words) {
    WordReader reader(select);
    int depth = 0;
    for (Word word = reader.next(); word.kind != Word::Kind::End; word = reader.next()) {
        depth += isSymbol(word, u'(') ? 1 : isSymbol(word, u')') ? -1 : 0;
        if (depth == 0) {
            if (isAnyOf(word, kOtherRows)) {
                return false;
            }
            words.push_back(std::move(word));
        }
    }
    return depth == 0;
}

std::u16string catalogName(std::u16string_view written, NameCase names) {
    switch (names) {
    case NameCase::Lower:
        return platform::lowerCase(written);
    case NameCase::Upper:
        return platform::upperCase(written);
    case NameCase::Kept:
        break;
    }
    return std::u16string(written);
}

} // namespace

std::optional<OdbcTable> tableOf(std::u16string_view select, NameCase names) {
    std::vector<Word> words;
    if (!readPlainWords(select, words)) {
        return std::nullopt;
    }
    auto word = std::find_if(words.begin(), words.end(), [](const Word& each) { return isAnyOf(each, kFrom); });
    const auto isName = [&] {
        return word != words.end() && (word->kind == Word::Kind::Plain || word->kind == Word::Kind::Quoted);
    };
    OdbcTable table;
    std::vector<std::u16string> parts;
    do { // catalog.schema.table; the word in front is "from" or a point
        if (word == words.end() || ++word == words.end() || !isName()) {
            return std::nullopt;
        }
        table.written.append(table.written.empty() ? u"" : u".").append(word->written);
        parts.push_back(word->kind == Word::Kind::Quoted ? word->name : catalogName(word->written, names));
        ++word;
    } while (word != words.end() && isSymbol(*word, u'.'));
    table.name = parts.back();
    table.schema = parts.size() > 1 ? parts[parts.size() - 2] : std::u16string();
    if (word != words.end() && isAnyOf(*word, kAs)) {
        ++word;
    }
    if (isName() && !isAnyOf(*word, kEndOfTable)) { // another name for it
        ++word;
    }
    const bool alone = word == words.end() || isAnyOf(*word, kEndOfTable) || isSymbol(*word, u';');
    return alone ? std::optional(std::move(table)) : std::nullopt;
}

namespace {

using Names = std::vector<std::u16string>;

/// Positions of the named columns, none unless the result holds them all.
std::vector<std::size_t> positionsOf(const Names& names, std::span<const OdbcColumn> columns) {
    std::vector<std::size_t> positions;
    for (const std::u16string& name : names) {
        const auto column = std::find_if(columns.begin(), columns.end(),
                                         [&](const OdbcColumn& each) { return equalNoCase(each.info.name, name); });
        if (column == columns.end()) {
            return {};
        }
        positions.push_back(static_cast<std::size_t>(column - columns.begin()));
    }
    return positions;
}

/// Tables of one name in several schemas are told apart by nothing that we know: then no key is the answer.
class OneSchema {
public:
    bool admits(const std::u16string& schema) {
        several_ = several_ || (seen_ && *seen_ != schema);
        seen_ = schema;
        return !several_;
    }
    bool several() const noexcept { return several_; }

private:
    std::optional<std::u16string> seen_;
    bool several_ = false;
};

// Columns of the standard's lists, from 0.
constexpr std::size_t kSchema = 1, kKeyColumn = 3, kKeySequence = 4;
constexpr std::size_t kNotUnique = 3, kIndexName = 5, kIndexedColumn = 8, kFilter = 12;

std::vector<std::size_t> primaryKey(const OdbcTable& table, std::span<const OdbcColumn> columns,
                                    const std::shared_ptr<OdbcConnection>& connection) {
    OdbcStatement list(connection, "look up the key of table", table.written);
    list.listPrimaryKey(table.schema, table.name);
    OneSchema schema;
    std::map<long long, std::u16string> bySequence;
    while (list.fetch()) {
        schema.admits(list.readText(kSchema));
        std::u16string name = list.readText(kKeyColumn);
        bySequence[toInteger(list.read(kKeySequence, FieldType::Integer)).value_or(0)] = std::move(name);
    }
    Names names;
    for (auto& [sequence, name] : bySequence) {
        names.push_back(std::move(name));
    }
    return schema.several() ? std::vector<std::size_t>() : positionsOf(names, columns);
}

std::vector<std::size_t> uniqueIndex(const OdbcTable& table, std::span<const OdbcColumn> columns,
                                     const std::shared_ptr<OdbcConnection>& connection) {
    OdbcStatement list(connection, "look up the indexes of table", table.written);
    list.listUniqueIndexes(table.schema, table.name);
    OneSchema schema;
    std::map<std::u16string, Names> indexes;
    while (list.fetch()) {
        schema.admits(list.readText(kSchema));
        const auto notUnique = toInteger(list.read(kNotUnique, FieldType::Integer));
        const std::u16string index = list.readText(kIndexName);
        std::u16string column = list.readText(kIndexedColumn);
        if (notUnique == 0 && list.readText(kFilter).empty()) { // rows of figures about the table have Null here
            indexes[index].push_back(std::move(column));
        }
    }
    std::vector<std::size_t> best;
    for (const auto& [index, names] : indexes) {
        std::vector<std::size_t> positions = positionsOf(names, columns);
        const bool complete = std::none_of(positions.begin(), positions.end(),
                                           [&](std::size_t position) { return columns[position].nullable; });
        if (!schema.several() && complete && !positions.empty() && (best.empty() || positions.size() < best.size())) {
            best = std::move(positions);
        }
    }
    return best;
}

/// Not every type can stand beside "=": long texts of SQL Server cannot, and parts of a second or of a fraction may be
/// lost on their way here and back.
bool isComparable(const OdbcColumn& column, std::u16string_view product) {
    constexpr std::array<std::u16string_view, 4> kNever{u"ntext", u"image", u"xml", u"json"};
    const bool never =
        std::any_of(kNever.begin(), kNever.end(), [&](auto name) { return equalNoCase(name, column.typeName); });
    const bool oldText = equalNoCase(column.typeName, u"text") && product.find(u"SQL Server") != product.npos;
    switch (column.info.type) {
    case FieldType::Single:
    case FieldType::Double:
    case FieldType::DateTime:
    case FieldType::LongBinary:
        return false;
    default:
        return !never && !oldText;
    }
}

/// What a driver cannot tell is as good as absent: the row is then looked for by all of its columns.
template <class Look>
std::vector<std::size_t> ifTold(Look&& look) {
    try {
        return look();
    } catch (const Error& error) {
        if (error.kind() == Error::Kind::Connection) {
            throw;
        }
        return {};
    }
}

} // namespace

OdbcKey keyOf(const OdbcTable& table, std::span<const OdbcColumn> columns,
              const std::shared_ptr<OdbcConnection>& connection) {
    OdbcKey key;
    key.columns = ifTold([&] { return primaryKey(table, columns, connection); });
    if (key.columns.empty()) {
        key.columns = ifTold([&] { return uniqueIndex(table, columns, connection); });
    }
    key.unique = !key.columns.empty();
    for (std::size_t i = 0; !key.unique && i < columns.size(); ++i) {
        if (isComparable(columns[i], connection->serverProduct())) {
            key.columns.push_back(i);
        }
    }
    if (key.columns.empty()) {
        throw odbcError(Error::Kind::Refused, connection->place(), {"find the row again in table", table.written, {}},
                        "it has no primary key, and none of the selected columns can be compared");
    }
    return key;
}

} // namespace kelb::ado
