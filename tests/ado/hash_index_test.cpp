#include "ado/hash_index.h"
#include "ado/shared_database.h"

#include "tests/ado/ado_fixture.h"

#include "platform/letter_case.h"
#include "platform/text.h"

#include <map>
#include <random>

namespace kelb::ado::testing {
namespace {

jet::RowId row(std::uint32_t number) {
    return jet::RowId::unpack(number);
}

TEST(HashIndex, FindsEveryRowThroughGrowth) {
    HashIndex index(0);
    for (std::uint32_t i = 0; i < 5000; ++i) {
        index.add(u"http://a/" + platform::number(i / 2), row(i));
    }
    for (std::uint32_t i = 0; i < 2500; ++i) {
        std::vector<jet::RowId> found;
        EXPECT_TRUE(index.find(u"HTTP://A/" + platform::number(i), 100, found));
        std::sort(found.begin(), found.end());
        EXPECT_EQ(found, (std::vector{row(2 * i), row(2 * i + 1)})) << i;
    }
    std::vector<jet::RowId> found;
    EXPECT_TRUE(index.find(u"http://a/2500", 100, found));
    EXPECT_FALSE(index.find(u"http://a/7", 1, found));
}

TEST(HashIndex, IsWornWhenMostOfItIsVoid) {
    HashIndex index(10);
    for (std::uint32_t i = 0; i < 4000; ++i) {
        index.add(u"x", row(i));
    }
    for (int i = 0; i < 2000; ++i) {
        index.noteVoid();
    }
    EXPECT_FALSE(index.isWorn());
    index.noteVoid();
    EXPECT_TRUE(index.isWorn());
}

/// Random changes on every way that there is, against a map; each answer also against a scan.
class HashIndexModel : public AdoFixture, public ::testing::WithParamInterface<unsigned> {
public:
    using Model = std::multimap<std::u16string, int>; ///< upper-cased text to number

    std::u16string text() {
        std::u16string made = u"网'" + platform::number(static_cast<long long>(engine() % 40));
        for (char16_t& unit : made += u"abcé") {
            unit = engine() % 2 == 0 ? platform::upper(unit) : unit;
        }
        return made;
    }
    void change();
    void compare();

    std::mt19937 engine{GetParam()};
    Model model;
    std::map<int, std::u16string> texts;
    int last = 0;
};

void HashIndexModel::change() {
    const std::u16string a = text(), quoted = platform::quoted(a);
    const int some = texts.empty() ? 0 : std::next(texts.begin(), static_cast<int>(engine() % texts.size()))->first;
    const std::u16string number = platform::number(some);
    switch (engine() % 7) {
    case 0:
    case 1: {
        execute(u"insert into t (n, a) values (" + platform::number(++last) + u", '" + quoted + u"')");
        texts[last] = a;
        break;
    }
    case 2: {
        Recordset set = open(u"t");
        set.AddNew();
        set.set(u"n", std::int32_t{++last});
        set.set(u"a", a);
        set.Update();
        texts[last] = a;
        break;
    }
    case 3:
        execute(u"update t set a='" + quoted + u"', m=m where n=" + number);
        if (texts.contains(some)) {
            texts[some] = a;
        }
        break;
    case 4: {
        Recordset set = open(u"select * from t where n=" + number);
        if (!set.Eof()) {
            set.set(u"m", std::u16string(engine() % 2 * 3000, u'x')); // the row moves
            set.Update();
        }
        break;
    }
    case 5:
        execute(u"delete from t where n=" + number);
        texts.erase(some);
        break;
    default: // refused half-way: the unique index on u
        EXPECT_TRUE(errorOf([&] { execute(u"insert into t (n, a, u) values (-1, '" + quoted + u"', 'k')"); }));
        EXPECT_TRUE(errorOf([&] { execute(u"update t set a='" + quoted + u"', u='k' where n=" + number); }) ||
                    !texts.contains(some));
        break;
    }
}

void HashIndexModel::compare() {
    const std::u16string a = text();
    std::string expected;
    for (const auto& [number, its] : texts) {
        if (platform::equalNoCase(its, a)) {
            expected += (expected.empty() ? "" : " / ") + std::to_string(number);
        }
    }
    const std::u16string quoted = platform::quoted(a);
    EXPECT_EQ(rows(u"select n from t where a='" + quoted + u"' order by n"), expected);
    EXPECT_EQ(rows(u"select n from t where not a<>'" + quoted + u"' order by n"), expected); // by a scan
}

TEST_P(HashIndexModel, AgreesWithAMap) {
    SCOPED_TRACE("seed " + std::to_string(GetParam()));
    execute(u"create table t (n int, a varchar(60), m memo, u varchar(5))");
    execute(u"create unique index i on t (u)");
    execute(u"insert into t (n, u) values (-1, 'k')");
    for (int i = 0; i < 1200; ++i) {
        change();
        if (i % 3 == 0) {
            compare();
        }
        if (i % 400 == 399) {
            connection->BeginTrans();
            const auto before = texts;
            for (int j = 0; j < 20; ++j) {
                change();
                compare();
            }
            connection->RollbackTrans();
            texts = before;
        }
    }
    EXPECT_EQ(faults(), "");
}

INSTANTIATE_TEST_SUITE_P(Seeds, HashIndexModel, ::testing::Values(1U, 2U, std::random_device{}()));

/// A worn index is made anew and goes on being right.
TEST_F(AdoFixture, HashIndexIsRenewed) {
    execute(u"create table t (n int, a varchar(20))");
    for (int i = 0; i < 50; ++i) {
        execute(u"insert into t values (1, 'x')");
    }
    EXPECT_EQ(count(u"select * from t where a='x'"), 50U);
    for (int i = 0; i < 60; ++i) {
        execute(i % 2 == 0 ? u"update t set a='y'" : u"update t set a='X'");
    }
    EXPECT_EQ(count(u"select * from t where a='x'"), 50U);
    const auto shared = environment->share(path, AccessWish::Read);
    jet::Table& table = shared->table(u"t");
    EXPECT_EQ(shared->hashIndex(table, table.definition().columns[1]).entryCount(), 50U);
}

} // namespace
} // namespace kelb::ado::testing
