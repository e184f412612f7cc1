#include "ado/sql_evaluator.h"

#include "ado/error.h"
#include "ado/sql_parser.h"

#include "platform/utf8.h"

#include <gtest/gtest.h>

namespace kelb::ado {
namespace {

FieldInfo field(std::u16string name, FieldType type) {
    FieldInfo info;
    info.name = std::move(name);
    info.type = type;
    return info;
}

const std::vector<FieldInfo> kFields = {field(u"n", FieldType::Long),  field(u"t", FieldType::Text),
                                        field(u"b", FieldType::YesNo), field(u"d", FieldType::DateTime),
                                        field(u"x", FieldType::Text),  field(u"m", FieldType::Currency),
                                        field(u"g", FieldType::Guid),  field(u"r", FieldType::Double)};

/// n = 28, t = "Thread-1-é", b = yes, d = 2015-12-2 8:30, x = Null, m = 1.5, g = {00…00}, r = 0.25
class OneRow final : public RowFields {
public:
    Value value(std::size_t index) const override { return values_[index]; }
    bool text(std::size_t index, std::u16string& out) const override {
        out = toText(values_[index]);
        return !ado::isNull(values_[index]);
    }
    bool isNull(std::size_t index) const override { return ado::isNull(values_[index]); }

private:
    std::vector<Value> values_ = {std::int32_t{28},
                                  std::u16string(u"Thread-1-é"),
                                  true,
                                  fromDateTime({2015, 12, 2, 8, 30, 0}),
                                  Null{},
                                  Currency{15000},
                                  Guid{},
                                  0.25};
};

BoundExpression bound(std::u16string_view expression) {
    const auto statement = parseStatement(u"select * from tab where " + std::u16string(expression));
    return bindCondition(*std::get<SelectStatement>(statement).where, {u"tab", u"a", kFields});
}

char truth(std::u16string_view expression) {
    switch (Evaluator().test(bound(expression), OneRow())) {
    case Truth::False:
        return '0';
    case Truth::True:
        return '1';
    default:
        return '?';
    }
}

struct TruthCase {
    const char16_t* expression;
    char truth; ///< '?' for Unknown
};

TEST(SqlEvaluator, Compares) {
    const TruthCase cases[] = {
        // Null logic, every pair.
        {u"n=28 and n=28", '1'},
        {u"n=28 and n=1", '0'},
        {u"n=28 and x='a'", '?'},
        {u"n=1 and x='a'", '0'},
        {u"x='a' and x='a'", '?'},
        {u"n=28 or x='a'", '1'},
        {u"n=1 or x='a'", '?'},
        {u"x='a' or x='a'", '?'},
        {u"n=1 or n=2", '0'},
        {u"not n=1", '1'},
        {u"not n=28", '0'},
        {u"not x='a'", '?'},
        {u"x=null", '?'},
        {u"null=null", '?'},
        {u"x is null", '1'},
        {u"t is null", '0'},
        {u"x is not null", '0'},
        {u"x<>''", '?'},
        {u"x=''", '?'},
        {u"not (x like '%')", '?'},
        {u"x in ('a')", '?'},
        {u"n in (1, null)", '?'},
        {u"n in (28, null)", '1'},
        {u"n not in (1, null)", '?'},
        {u"n between 1 and null", '?'},
        {u"n between 30 and null", '0'},
        // Numbers, yes/no, dates.
        {u"n=28.0", '1'},
        {u"28=n", '1'},
        {u"27<n", '1'},
        {u"28<n", '0'},
        {u"28<=n", '1'},
        {u"29>=n", '1'},
        {u"n between 28 and 28", '1'},
        {u"n between 29 and 27", '0'},
        {u"n in (1, 28)", '1'},
        {u"b=true", '1'},
        {u"b=-1", '1'},
        {u"b=1", '0'},
        {u"b", '1'},
        {u"not b", '0'},
        {u"b<>false", '1'},
        {u"b=(n=28)", '1'},
        {u"n", '1'},
        {u"n-28", '0'},
        {u"m=1.5", '1'},
        {u"m>1", '1'},
        {u"r=0.25", '1'},
        {u"d=#2015-12-2 8:30:00#", '1'},
        {u"d>#2015-12-2#", '1'},
        {u"d<42341", '1'},
        {u"d-1<#2015-12-2#", '1'},
        {u"n+2*3-4/2=32", '1'},
        {u"-n=-28", '1'},
        {u"2147483647+1=2147483648", '1'},
        {u"n+null=1", '?'},
        // Texts, without regard to case; trailing blanks count.
        {u"t='tHREAD-1-É'", '1'},
        {u"t<>'tHREAD-1-É'", '0'},
        {u"t='thread-1-é '", '0'},
        {u"t>'thread-1'", '1'},
        {u"t<'U'", '1'},
        {u"'a'='A'", '1'},
        {u"t in ('x', 'THREAD-1-É')", '1'},
        {u"t & x & n='Thread-1-é28'", '1'},
        {u"t between 's' and 'u'", '1'},
        {u"x & x is null", '1'},
        {u"'a' + 'b' = 'AB'", '1'},
        {u"g='{00000000-0000-0000-0000-000000000000}'", '1'},
        // LIKE.
        {u"t like 'thread%'", '1'},
        {u"t like '%-[1-9]-%'", '1'},
        {u"t like '%-[!1]-%'", '0'},
        {u"t like 'thread-1-_'", '1'},
        {u"t like 'thread-1-é'", '1'},
        {u"t like 'thread*'", '0'},
        {u"t not like '%thread%'", '0'},
        {u"n like '2%'", '1'},
        {u"t like null", '?'},
        {u"t like x", '?'},
        {u"a.t like t", '1'},
        {u"TAB.N = 28", '1'},
    };
    for (const TruthCase& c : cases) {
        EXPECT_EQ(truth(c.expression), c.truth) << platform::toUtf8(c.expression);
    }
}

struct MismatchCase {
    const char16_t* expression;
    Error::Kind kind;
    const char* says;
};

TEST(SqlEvaluator, RefusesWhatDoesNotGoTogether) {
    const MismatchCase cases[] = {
        {u"n='28'", Error::Kind::TypeMismatch, "column n is a number but is compared with a text"},
        {u"t=28", Error::Kind::TypeMismatch, "column t is a text but is compared with a number"},
        {u"d='2015-12-2'", Error::Kind::TypeMismatch, "column d is a date"},
        {u"n in (1, 'a')", Error::Kind::TypeMismatch, "column n is a number"},
        {u"n between 1 and 'a'", Error::Kind::TypeMismatch, "column n is a number"},
        {u"t", Error::Kind::TypeMismatch, "where a condition is expected"},
        {u"n=1 and t", Error::Kind::TypeMismatch, "where a condition is expected"},
        {u"t-1=2", Error::Kind::TypeMismatch, "where a number is expected"},
        {u"t like 5", Error::Kind::TypeMismatch, "the pattern of LIKE"},
        {u"nosuch=1", Error::Kind::NoSuchColumn, "table tab has no column \"nosuch\""},
        {u"other.n=1", Error::Kind::NoSuchColumn, "of other"},
        {u"tab.nosuch=1", Error::Kind::NoSuchColumn, "(character 25)"},
    };
    for (const MismatchCase& c : cases) {
        try {
            static_cast<void>(bound(c.expression));
            ADD_FAILURE() << platform::toUtf8(c.expression) << " was taken";
        } catch (const Error& error) {
            EXPECT_EQ(error.kind(), c.kind) << error.what();
            EXPECT_NE(std::string(error.what()).find(c.says), std::string::npos) << error.what();
        }
    }
    EXPECT_THROW(truth(u"1/(n-28)=1"), Error);
}

} // namespace
} // namespace kelb::ado
