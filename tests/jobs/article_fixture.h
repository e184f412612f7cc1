#pragma once

#include "tests/jobs/job_fixture.h"

namespace kelb::jobs {

/// Crawl rows whose `content` holds the page or names its file.
class ArticleTest : public JobTest {
protected:
    void SetUp() override { files.makeFolders(u"X:\\home\\TestRec"); }

    /// One row of the crawl table; fields without a value are Null.
    struct Row {
        std::u16string url;
        std::optional<std::u16string> content;
        std::optional<std::int32_t> cid = std::nullopt;
    };
    void crawlRows(const std::vector<Row>& rows) {
        auto at = platformOf(files);
        ado::Environment environment(at, {});
        ado::Connection connection(environment);
        connection.Open(ado::jetConnectionString(kSource));
        ado::Recordset set;
        set.Open(u"select * from bbsforum", connection, ado::CursorType::Keyset, ado::LockType::Optimistic);
        for (const Row& row : rows) {
            set.AddNew();
            set.set(u"url", row.url);
            if (row.content) {
                set.set(u"content", *row.content);
            }
            if (row.cid) {
                set.set(u"cid", ado::Value(*row.cid));
            }
            set.Update();
        }
    }

    std::u16string overflowFile(int number) {
        return platform::decode936(
            files.readFile(u"X:\\home\\TestRec\\Store" + platform::fromUtf8(std::to_string(number)) + u".txt"));
    }
    static std::u16string letters(std::size_t count) { return std::u16string(count, u'文'); }
};

} // namespace kelb::jobs
