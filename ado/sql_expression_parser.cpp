#include "ado/sql_expression_parser.h"

#include "platform/letter_case.h"
#include "platform/utf8.h"

#include <array>
#include <utility>

namespace kelb::ado {

namespace {

/// Bounds of recursion here and in the evaluation: brackets and NOT within each other; links of one chain of + and &.
constexpr std::size_t kMaxDepth = 100, kMaxChain = 1000;

struct SymbolOperator {
    std::u16string_view symbol;
    Operator op;
};
constexpr std::array<SymbolOperator, 6> kComparisons = {{{u"=", Operator::Equal},
                                                         {u"<>", Operator::NotEqual},
                                                         {u"<", Operator::Less},
                                                         {u"<=", Operator::LessEqual},
                                                         {u">", Operator::Greater},
                                                         {u">=", Operator::GreaterEqual}}};
constexpr std::array<SymbolOperator, 1> kJoining = {{{u"&", Operator::Concatenate}}};
constexpr std::array<SymbolOperator, 2> kSums = {{{u"+", Operator::Add}, {u"-", Operator::Subtract}}};
constexpr std::array<SymbolOperator, 2> kProducts = {{{u"*", Operator::Multiply}, {u"/", Operator::Divide}}};

struct NamedConstant {
    std::u16string_view name;
    bool value;
};
constexpr std::array<NamedConstant, 6> kNamedConstants = {
    {{u"TRUE", true}, {u"FALSE", false}, {u"YES", true}, {u"NO", false}, {u"ON", true}, {u"OFF", false}}};

Expression node(Operator op, std::size_t position) {
    Expression expression;
    expression.op = op;
    expression.position = position;
    return expression;
}

template <class... Operands>
Expression node(Operator op, std::size_t position, Operands&&... operands) {
    Expression expression = node(op, position);
    expression.operands.reserve(sizeof...(operands));
    (expression.operands.push_back(std::forward<Operands>(operands)), ...);
    return expression;
}

class ExpressionParser {
public:
    explicit ExpressionParser(TokenReader& tokens) : tokens_(tokens) {}

    Expression any() { return list(u"OR", Operator::Or, &ExpressionParser::conjunction); }

private:
    using Rule = Expression (ExpressionParser::*)();

    /// RAII count of nesting.
    class Nested {
    public:
        explicit Nested(ExpressionParser& parser) : depth_(parser.depth_) {
            if (++depth_ > kMaxDepth) {
                parser.tokens_.failAt(parser.tokens_.peek().position, "the expression is nested too deep");
            }
        }
        ~Nested() { --depth_; }
        Nested(const Nested&) = delete;
        Nested& operator=(const Nested&) = delete;

    private:
        std::size_t& depth_;
    };

    /// `a OR b OR c` becomes one node, however long.
    Expression list(std::u16string_view keyword, Operator op, Rule part) {
        Expression first = (this->*part)();
        if (!tokens_.atKeyword(keyword)) {
            return first;
        }
        Expression all = node(op, first.position, std::move(first));
        while (tokens_.acceptKeyword(keyword)) {
            all.operands.push_back((this->*part)());
        }
        return all;
    }

    Expression conjunction() { return list(u"AND", Operator::And, &ExpressionParser::negation); }

    Expression negation() {
        const std::size_t position = tokens_.peek().position;
        if (!tokens_.acceptKeyword(u"NOT")) {
            return comparison();
        }
        const Nested nested(*this);
        return node(Operator::Not, position, negation());
    }

    Expression comparison() {
        Expression left = joined();
        const std::size_t position = tokens_.peek().position;
        if (const SymbolOperator* found = acceptOf(kComparisons)) {
            return node(found->op, position, std::move(left), joined());
        }
        if (tokens_.acceptKeyword(u"IS")) {
            const bool negated = tokens_.acceptKeyword(u"NOT");
            tokens_.expectKeyword(u"NULL");
            return negatedIf(negated, node(Operator::IsNull, position, std::move(left)));
        }
        const bool negated = tokens_.acceptKeyword(u"NOT");
        if (tokens_.acceptKeyword(u"LIKE")) {
            return negatedIf(negated, node(Operator::Like, position, std::move(left), joined()));
        }
        if (tokens_.acceptKeyword(u"IN")) {
            return negatedIf(negated, inList(position, std::move(left)));
        }
        if (tokens_.acceptKeyword(u"BETWEEN")) {
            Expression low = joined();
            tokens_.expectKeyword(u"AND");
            return negatedIf(negated, node(Operator::Between, position, std::move(left), std::move(low), joined()));
        }
        if (negated) {
            tokens_.fail("LIKE, IN or BETWEEN");
        }
        return left;
    }

    static Expression negatedIf(bool negated, Expression expression) {
        const std::size_t position = expression.position;
        return negated ? node(Operator::Not, position, std::move(expression)) : std::move(expression);
    }

    Expression inList(std::size_t position, Expression tested) {
        Expression in = node(Operator::In, position, std::move(tested));
        tokens_.expectSymbol(u"(");
        if (tokens_.atKeyword(u"SELECT")) {
            tokens_.fail("a list of values (a SELECT inside a statement is not supported)");
        }
        const Nested nested(*this);
        do {
            in.operands.push_back(joined());
        } while (tokens_.acceptSymbol(u","));
        tokens_.expectSymbol(u")");
        return in;
    }

    template <std::size_t N>
    const SymbolOperator* acceptOf(const std::array<SymbolOperator, N>& operators) {
        for (const SymbolOperator& candidate : operators) {
            if (tokens_.acceptSymbol(candidate.symbol)) {
                return &candidate;
            }
        }
        return nullptr;
    }

    template <std::size_t N>
    Expression chain(const std::array<SymbolOperator, N>& operators, Rule part) {
        Expression left = (this->*part)();
        for (std::size_t links = 0;; ++links) {
            const std::size_t position = tokens_.peek().position;
            const SymbolOperator* found = acceptOf(operators);
            if (found == nullptr) {
                return left;
            }
            if (links == kMaxChain) {
                tokens_.failAt(position, "the expression is too long");
            }
            left = node(found->op, position, std::move(left), (this->*part)());
        }
    }

    Expression joined() { return chain(kJoining, &ExpressionParser::sum); }
    Expression sum() { return chain(kSums, &ExpressionParser::product); }
    Expression product() { return chain(kProducts, &ExpressionParser::factor); }

    Expression factor() {
        const std::size_t position = tokens_.peek().position;
        if (tokens_.acceptSymbol(u"+")) {
            const Nested nested(*this);
            return factor();
        }
        if (!tokens_.acceptSymbol(u"-")) {
            return operand();
        }
        const Nested nested(*this);
        Expression inner = factor();
        if (auto* number = std::get_if<std::int32_t>(&inner.constant); number != nullptr && *number > 0) {
            *number = -*number;
            return inner;
        }
        if (auto* number = std::get_if<double>(&inner.constant)) {
            *number = -*number;
            return inner;
        }
        return node(Operator::Negate, position, std::move(inner));
    }

    Expression operand() {
        const Token& token = tokens_.peek();
        const std::size_t position = token.position;
        if (token.kind == Token::Kind::Constant) {
            return constant(position, tokens_.next().value);
        }
        if (token.kind == Token::Kind::Text) {
            return constant(position, tokens_.next().text);
        }
        if (tokens_.acceptSymbol(u"(")) {
            const Nested nested(*this);
            Expression inner = any();
            tokens_.expectSymbol(u")");
            return inner;
        }
        if (tokens_.acceptKeyword(u"NULL")) {
            return constant(position, jet::Null{});
        }
        for (const NamedConstant& named : kNamedConstants) {
            if (!tokens_.atSymbol(u".", 1) && tokens_.acceptKeyword(named.name)) {
                return constant(position, named.value);
            }
        }
        return column(position);
    }

    static Expression constant(std::size_t position, Value value) {
        Expression expression = node(Operator::Constant, position);
        expression.constant = std::move(value);
        return expression;
    }

    Expression column(std::size_t position) {
        if (tokens_.peek().kind == Token::Kind::Name && tokens_.atSymbol(u"(", 1)) {
            tokens_.fail("a column or a value (the function " + platform::toUtf8(tokens_.peek().text) +
                         " is not supported)");
        }
        const ColumnName name = parseColumnName(tokens_);
        Expression expression = node(Operator::Column, position);
        expression.table = name.table;
        expression.column = name.name;
        return expression;
    }

    TokenReader& tokens_;
    std::size_t depth_ = 0;
};

} // namespace

Expression parseExpression(TokenReader& tokens) {
    return ExpressionParser(tokens).any();
}

ColumnName parseColumnName(TokenReader& tokens) {
    ColumnName column;
    column.position = tokens.peek().position;
    column.name = tokens.expectName("a column or a value");
    if (tokens.acceptSymbol(u".")) {
        column.table = std::exchange(column.name, tokens.expectName("a column"));
    }
    return column;
}

} // namespace kelb::ado
