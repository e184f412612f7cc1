#include "ado/sql_lexer.h"

#include "ado/error.h"

#include "platform/date_time.h"
#include "platform/utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>

namespace kelb::ado {

namespace {

constexpr std::size_t kShownCharacters = 40;

bool isBlank(char16_t unit) noexcept {
    return unit == u' ' || unit == u'\t' || unit == u'\r' || unit == u'\n';
}
bool isDigit(char16_t unit) noexcept {
    return unit >= u'0' && unit <= u'9';
}
/// Letters of every script: whatever ASCII does not use otherwise.
bool beginsName(char16_t unit) noexcept {
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') || unit == u'_' || unit > 0x7F;
}
bool continuesName(char16_t unit) noexcept {
    return beginsName(unit) || isDigit(unit) || unit == u'$';
}

class Lexer {
public:
    explicit Lexer(std::u16string_view statement) : text_(statement) {}

    bool next(Token& token) {
        while (at_ < text_.size() && isBlank(text_[at_])) {
            ++at_;
        }
        token = Token{};
        token.position = at_;
        if (at_ == text_.size()) {
            return false;
        }
        const char16_t unit = text_[at_];
        if (beginsName(unit)) {
            readName(token);
        } else if (isDigit(unit) || (unit == u'.' && at_ + 1 < text_.size() && isDigit(text_[at_ + 1]))) {
            readNumber(token);
        } else if (unit == u'\'' || unit == u'"') {
            readText(token, unit);
        } else if (unit == u'[') {
            readBracketName(token);
        } else if (unit == u'#') {
            readDate(token);
        } else {
            readSymbol(token);
        }
        return true;
    }

private:
    void readName(Token& token) {
        std::size_t end = at_;
        while (end < text_.size() && continuesName(text_[end])) {
            ++end;
        }
        token.kind = Token::Kind::Name;
        token.text = text_.substr(at_, end - at_);
        at_ = end;
    }

    std::size_t skipDigits(std::size_t from) const {
        while (from < text_.size() && isDigit(text_[from])) {
            ++from;
        }
        return from;
    }

    void readNumber(Token& token) {
        std::size_t end = skipDigits(at_);
        bool whole = true;
        if (end < text_.size() && text_[end] == u'.') {
            whole = false;
            end = skipDigits(end + 1);
        }
        if (end < text_.size() && (text_[end] == u'e' || text_[end] == u'E')) {
            const bool sign = end + 1 < text_.size() && (text_[end + 1] == u'+' || text_[end + 1] == u'-');
            const std::size_t digits = end + (sign ? 2 : 1);
            if (skipDigits(digits) > digits) {
                whole = false;
                end = skipDigits(digits);
            }
        }
        token.kind = Token::Kind::Constant;
        token.text = text_.substr(at_, end - at_);
        if (end < text_.size() && continuesName(text_[end])) {
            throwSyntaxError(at_, text_.substr(at_), "a name that begins with a digit needs brackets: [name]");
        }
        token.value = numberOf(token.text, whole);
        at_ = end;
    }

    Value numberOf(std::u16string_view digits, bool whole) const {
        const std::string ascii(digits.begin(), digits.end());
        const char* const end = ascii.data() + ascii.size();
        std::int32_t number = 0;
        if (whole && std::from_chars(ascii.data(), end, number).ec == std::errc()) {
            return number;
        }
        double value = 0;
        if (std::from_chars(ascii.data(), end, value).ec != std::errc()) {
            throwSyntaxError(at_, digits, "the number is out of range");
        }
        return value;
    }

    void readText(Token& token, char16_t quote) {
        token.kind = Token::Kind::Text;
        std::size_t from = at_ + 1;
        for (;;) {
            const std::size_t close = text_.find(quote, from);
            if (close == text_.npos) {
                throwSyntaxError(at_, text_.substr(at_),
                                 "the text has no closing quote (quotes inside a text are doubled)");
            }
            token.text += text_.substr(from, close - from);
            at_ = close + 1;
            if (at_ == text_.size() || text_[at_] != quote) {
                return;
            }
            token.text += quote;
            from = at_ + 1;
        }
    }

    void readBracketName(Token& token) {
        const std::size_t close = text_.find(u']', at_);
        if (close == text_.npos || close == at_ + 1) {
            throwSyntaxError(at_, text_.substr(at_), "expected a name between [ and ]");
        }
        token.kind = Token::Kind::BracketName;
        token.text = text_.substr(at_ + 1, close - at_ - 1);
        at_ = close + 1;
    }

    void readDate(Token& token) {
        const std::size_t close = text_.find(u'#', at_ + 1);
        if (close != text_.npos) {
            const auto time = platform::parseDateTime(text_.substr(at_ + 1, close - at_ - 1));
            if (time) {
                token.kind = Token::Kind::Constant;
                token.text = text_.substr(at_, close + 1 - at_);
                token.value = fromDateTime(*time);
                at_ = close + 1;
                return;
            }
        }
        throwSyntaxError(at_, text_.substr(at_), "expected a date as #yyyy-M-d#, #yyyy-M-d H:mm:ss# or #M/d/yyyy#");
    }

    void readSymbol(Token& token) {
        constexpr std::array<std::u16string_view, 3> kPairs = {u"<>", u"<=", u">="};
        constexpr std::u16string_view kSingles = u"=<>(),.;*+-/&";
        const bool pair = std::find(kPairs.begin(), kPairs.end(), text_.substr(at_, 2)) != kPairs.end();
        if (!pair && kSingles.find(text_[at_]) == kSingles.npos) {
            throwSyntaxError(at_, text_.substr(at_), "this character has no meaning here");
        }
        token.kind = Token::Kind::Symbol;
        token.text = text_.substr(at_, pair ? 2 : 1);
        at_ += token.text.size();
    }

    std::u16string_view text_;
    std::size_t at_ = 0;
};

} // namespace

std::vector<Token> readTokens(std::u16string_view statement) {
    std::vector<Token> tokens;
    Lexer lexer(statement);
    Token token;
    while (lexer.next(token)) {
        tokens.push_back(std::move(token));
    }
    tokens.push_back(std::move(token));
    return tokens;
}

void throwSyntaxError(std::size_t position, std::u16string_view near, const std::string& reason) {
    std::string message = "syntax error at character " + std::to_string(position + 1);
    if (near.empty()) {
        message += ", at the end: ";
    } else {
        const bool cut = near.size() > kShownCharacters;
        message += ", near \"" + platform::toUtf8(near.substr(0, kShownCharacters)) + (cut ? "…" : "") + "\": ";
    }
    throw Error(Error::Kind::Syntax, message + reason);
}

bool isPlainName(std::u16string_view word) noexcept {
    return !word.empty() && beginsName(word.front()) && std::all_of(word.begin(), word.end(), continuesName);
}

} // namespace kelb::ado
