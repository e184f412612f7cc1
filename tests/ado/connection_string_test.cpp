#include "ado/connection_string.h"

#include <gtest/gtest.h>

namespace kelb::ado {
namespace {

struct PartCase {
    const char16_t* text;
    const char16_t* key;
    const char16_t* value;
};

TEST(ConnectionString, FindsValues) {
    const PartCase cases[] = {
        {u"Provider=P;Data Source=a.mdb", u"data source", u"a.mdb"},
        {u" Provider = P ; Data Source = D:\\a b.mdb ; ", u"DATA SOURCE", u"D:\\a b.mdb"},
        {u"Provider=P;Data Source=D:\\a=b.mdb", u"Data Source", u"D:\\a=b.mdb"},
        // The first provider and the last of anything else: a prefix that stands there twice opens the intended file.
        {u"Provider=P;Data Source=Provider=Q;Data Source=x.mdb", u"Data Source", u"x.mdb"},
        {u"Provider=P;Data Source=Provider=Q;Data Source=x.mdb", u"Provider", u"P"},
        {u"Provider=P;Provider=Q", u"Provider", u"P"},
        {u"a=1;A=2", u"a", u"2"},
        {u"Data Source=\"D:\\a;b.mdb\";x=1", u"Data Source", u"D:\\a;b.mdb"},
        {u"Data Source='it''s; here'", u"Data Source", u"it's; here"},
        {u"Data Source=\"open end;x=1", u"x", u"1"},
        {u"driver={sql server};server=h;Database=wxDB;uid=sa;pwd=", u"driver", u"{sql server}"},
        {u"driver={odd;name};server=h", u"server", u"h"},
        {u"driver={sql server};server=h;uid=sa;pwd=", u"pwd", u""},
        {u"Provider=P", u"Mode", u""},
    };
    for (const PartCase& c : cases) {
        EXPECT_EQ(ConnectionString(c.text).value(c.key), c.value) << std::string(c.text, c.text + 12);
    }
}

TEST(ConnectionString, HidesPasswords) {
    EXPECT_EQ(ConnectionString(u"driver={x};uid=sa;PWD=geheim;Password=auch;pwd=").shown(),
              u"driver={x};uid=sa;PWD=***;Password=***;pwd");
}

TEST(ConnectionString, NamesAnAccessFile) {
    EXPECT_EQ(jetConnectionString(u"D:\\a.mdb"), u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=D:\\a.mdb");
    const std::u16string twice = jetConnectionString(jetConnectionString(u"D:\\a.mdb"));
    EXPECT_EQ(twice,
              u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=Provider=Microsoft.Jet.OLEDB.4.0;Data Source=D:\\a.mdb");
    EXPECT_EQ(ConnectionString(twice).value(u"Data Source"), u"D:\\a.mdb");
    EXPECT_EQ(ConnectionString(jetConnectionString(u"D:\\a;\"b\".mdb")).value(u"Data Source"), u"D:\\a;\"b\".mdb");
}

} // namespace
} // namespace kelb::ado
