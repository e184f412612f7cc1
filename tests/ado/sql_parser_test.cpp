#include "ado/sql_parser.h"

#include "ado/error.h"

#include "platform/utf8.h"

#include <gtest/gtest.h>

#include <array>

namespace kelb::ado {
namespace {

using platform::toUtf8;

std::string show(const Expression& expression) {
    constexpr std::array<const char*, 21> kNames = {"const", "column", "and", "or", "not",  "=",  "<>",
                                                    "<",     "<=",     ">",   ">=", "like", "in", "between",
                                                    "null?", "+",      "-",   "*",  "/",    "&",  "neg"};
    if (expression.op == Operator::Constant) {
        if (const auto* text = std::get_if<std::u16string>(&expression.constant)) {
            return "'" + toUtf8(*text) + "'";
        }
        return isNull(expression.constant) ? "null" : toUtf8(toText(expression.constant));
    }
    if (expression.op == Operator::Column) {
        return toUtf8(expression.table.empty() ? expression.column : expression.table + u"." + expression.column);
    }
    std::string text = std::string("(") + kNames.at(static_cast<std::size_t>(expression.op));
    for (const Expression& operand : expression.operands) {
        text += " " + show(operand);
    }
    return text + ")";
}

std::string show(const ColumnName& column) {
    return toUtf8(column.table.empty() ? column.name : column.table + u"." + column.name);
}

std::string show(const SelectStatement& select) {
    std::string text = "select";
    if (select.top) {
        text += " top" + std::to_string(*select.top);
    }
    for (const auto& item : select.items) {
        text += " " + (item.count ? "count" : item.column.name.empty() ? show(item.column) + "*" : show(item.column));
        text += item.as.empty() ? "" : ":" + toUtf8(item.as);
    }
    text += " from " + toUtf8(select.table.name);
    text += select.table.alias.empty() ? "" : ":" + toUtf8(select.table.alias);
    text += select.where ? " where " + show(*select.where) : "";
    for (const auto& key : select.order) {
        text += " by " + show(key.column) + (key.ascending ? "" : " down");
    }
    return text;
}

struct ShapeCase {
    const char16_t* text;
    const char* shape;
};

TEST(SqlParser, ReadsSelects) {
    const ShapeCase cases[] = {
        {u"select * from bbsforum", "select * from bbsforum"},
        {u"SELECT * FROM [sheet1$];", "select * from sheet1$"},
        {u"select * from bbsforum ORDER BY ID DESC", "select * from bbsforum by ID down"},
        {u"select*from[a b]order by[x y],z asc", "select * from a b by x y by z"},
        {u"select top 1 url from wxAll where url='it''s'", "select top1 url from wxAll where (= url 'it's')"},
        {u"select top from t", "select top from t"}, // a column of that name
        {u"select count(*) as n from t", "select count:n from t"},
        {u"select t.*, t.[a b] as c, d from Tab as t", "select t.* t.a b:c d from Tab:t"},
        {u"select x from Tab t where t.x = 1", "select x from Tab:t where (= t.x 1)"},
        {u"select * from 表 where 列 like '网%'", "select * from 表 where (like 列 '网%')"},
        {u"select * from bbsforum where (cid=28 and url like '%thread%-1-%') ORDER BY url",
         "select * from bbsforum where (and (= cid 28) (like url '%thread%-1-%')) by url"},
        {u"select * from wxtcl where blnPass=true and TVCode='29F8' and id<>5 and blnJoined=false",
         "select * from wxtcl where (and (= blnPass True) (= TVCode '29F8') (<> id 5) (= blnJoined False))"},
        {u"select * from t where url='a' or url='b' ORDER BY url",
         "select * from t where (or (= url 'a') (= url 'b')) by url"},
    };
    for (const ShapeCase& c : cases) {
        EXPECT_EQ(show(std::get<SelectStatement>(parseStatement(c.text))), c.shape);
    }
}

TEST(SqlParser, BindsOperators) {
    const ShapeCase cases[] = {
        {u"a or b and not c", "(or a (and b (not c)))"},
        {u"not a = b and c", "(and (not (= a b)) c)"},
        {u"(a or b) and c", "(and (or a b) c)"},
        {u"a = 1 + 2 * -3 - b / 2", "(= a (- (+ 1 (* 2 -3)) (/ b 2)))"},
        {u"- a * b", "(* (neg a) b)"},
        {u"a & 'x' & 1 + 2 like 'y'", "(like (& (& a 'x') (+ 1 2)) 'y')"},
        {u"a not like '%x' or a not in (1, 'b') or a not between 1 and 2 and c",
         "(or (not (like a '%x')) (not (in a 1 'b')) (and (not (between a 1 2)) c))"},
        {u"a is null and b is not null", "(and (null? a) (not (null? b)))"},
        {u"a<>1 and b<=2 and c>=3 and d<4 and e>5", "(and (<> a 1) (<= b 2) (>= c 3) (< d 4) (> e 5))"},
        {u"yes = no or [yes] = [no] or t.yes", "(or (= True False) (= yes no) t.yes)"},
        {u"a = \"it's \"\"so\"\"\"", "(= a 'it's \"so\"')"},
        {u"a = #2015-12-2 8:30:00# and b = #12/2/2015#", "(and (= a 2015-12-2 8:30:00) (= b 2015-12-2 0:00:00))"},
        {u"a = .5 or a = 1.5e3 or a = 2147483648", "(or (= a 0.5) (= a 1500) (= a 2147483648))"},
    };
    for (const ShapeCase& c : cases) {
        const auto statement = parseStatement(std::u16string(u"select * from t where ") + c.text);
        EXPECT_EQ(show(*std::get<SelectStatement>(statement).where), c.shape);
    }
}

TEST(SqlParser, ReadsChanges) {
    const auto update = std::get<UpdateStatement>(parseStatement(u"update t set a = b + 1, [c d] = null where id = 3"));
    ASSERT_EQ(update.assignments.size(), 2U);
    EXPECT_EQ(show(update.assignments[0].column) + show(update.assignments[0].value), "a(+ b 1)");
    EXPECT_EQ(show(update.assignments[1].column) + show(update.assignments[1].value), "c dnull");
    EXPECT_EQ(show(*update.where), "(= id 3)");

    EXPECT_FALSE(std::get<DeleteStatement>(parseStatement(u"delete * from t")).where);
    EXPECT_EQ(show(*std::get<DeleteStatement>(parseStatement(u"delete t.* from t where a=1;")).where), "(= a 1)");

    const auto insert = std::get<InsertStatement>(parseStatement(u"insert into t (a, b) values ('x', -1)"));
    EXPECT_EQ(insert.columns.size(), 2U);
    EXPECT_EQ(show(std::get<std::vector<Expression>>(insert.source)[1]), "-1");
    const auto copy = std::get<InsertStatement>(parseStatement(u"insert into t select a from s where a > 1"));
    EXPECT_EQ(show(std::get<SelectStatement>(copy.source)), "select a from s where (> a 1)");
}

struct FaultCase {
    const char16_t* text;
    std::size_t character; ///< from 1
    const char* expected;
};

TEST(SqlParser, SaysWhereAndWhatItExpected) {
    const FaultCase cases[] = {
        {u"", 1, "SELECT, INSERT"},
        {u"selec * from t", 1, "SELECT, INSERT"},
        {u"select * form t", 10, "expected FROM"},
        {u"select from t", 8, "a column or a value"},
        {u"select * from", 14, "a table"},
        {u"select * from t where", 22, "a column or a value"},
        {u"select * from t where a = 'x", 27, "no closing quote"},
        {u"select * from t where a = 'it's'", 32, "no closing quote"}, // an apostrophe that was not doubled
        {u"select * from t where (a = 1", 29, "\")\""},
        {u"select * from t where a in ()", 29, "a column or a value"},
        {u"select * from t where a between 1 or 2", 35, "expected AND"},
        {u"select * from t where a not = 1", 29, "LIKE, IN or BETWEEN"},
        {u"select * from t where a = ?", 27, "no meaning"},
        {u"select * from t where a = 2x", 27, "needs brackets"},
        {u"select * from t where a = #soon#", 27, "a date"},
        {u"select * from t where len(a) = 1", 23, "the function len is not supported"},
        {u"select * from a, b", 16, "reads one table"},
        {u"select * from t group by a", 17, "GROUP is not supported"},
        {u"select distinct a from t", 8, "DISTINCT is not supported"},
        {u"select a, count(*) from t", 8, "cannot stand beside"},
        {u"select * from []", 15, "between [ and ]"},
        {u"select * from t order url", 23, "expected BY"},
        {u"select * from t; select", 18, "the end of the statement"},
        {u"update t set a 1", 16, "\"=\""},
        {u"insert into t (a, b) values (1)", 29, "2 columns are named but 1 values"},
        {u"create table t (a varchar 255)", 27, "\")\""},
        {u"create table t ()", 17, "a column"},
        {u"create view v", 8, "TABLE or INDEX"},
        {u"create table t (a int identity(5,1))", 32, "start at 1"},
        {u"alter table t rename", 15, "expected ADD"},
    };
    for (const FaultCase& c : cases) {
        try {
            static_cast<void>(parseStatement(c.text));
            ADD_FAILURE() << toUtf8(c.text) << " was read";
        } catch (const Error& error) {
            const std::string text = error.what();
            EXPECT_EQ(error.kind(), Error::Kind::Syntax) << text;
            EXPECT_NE(text.find("character " + std::to_string(c.character) + ","), text.npos) << text;
            EXPECT_NE(text.find(c.expected), text.npos) << text;
        }
    }
}

TEST(SqlParser, RefusesWhatTheEngineDoesNotHave) {
    for (const char16_t* text : {u"drop table t", u"alter table t drop column a", u"create table t (a int default 1)",
                                 u"create table t (a int, foreign key (a) references s (b))"}) {
        EXPECT_THROW(static_cast<void>(parseStatement(text)), Error) << toUtf8(text);
    }
}

/// Statements from outside may be made to exhaust the stack.
TEST(SqlParser, BoundsNesting) {
    const auto where = [](std::u16string text) { return u"select * from t where " + std::move(text); };
    const auto nested = [](std::size_t depth) {
        return std::u16string(depth, u'(') + u"a" + std::u16string(depth, u')');
    };
    EXPECT_NO_THROW(static_cast<void>(parseStatement(where(nested(90)))));
    EXPECT_THROW(static_cast<void>(parseStatement(where(nested(100000)))), Error);
    std::u16string nots, sum = u"1", any = u"a=1", minuses;
    for (int i = 0; i < 100000; ++i) {
        nots += u"not ";
        minuses += u"- ";
        sum += u"+1";
        any += u" or a=1";
    }
    EXPECT_THROW(static_cast<void>(parseStatement(where(nots + u"a"))), Error);
    EXPECT_THROW(static_cast<void>(parseStatement(where(minuses + u"a"))), Error);
    EXPECT_THROW(static_cast<void>(parseStatement(where(sum))), Error);
    EXPECT_NO_THROW(static_cast<void>(parseStatement(where(any)))); // as many as one likes: they do not nest
}

} // namespace
} // namespace kelb::ado
