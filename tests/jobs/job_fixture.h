#pragma once

#include "ado/connection.h"
#include "ado/connection_string.h"
#include "ado/recordset.h"
#include "jet/database.h"
#include "jobs/context.h"
#include "jobs/job_host.h"
#include "platform/clock.h"
#include "platform/code_page.h"
#include "platform/memory_file_system.h"
#include "platform/random.h"
#include "platform/utf8.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::jobs {

class FixedClock final : public platform::Clock {
public:
    platform::DateTime now() const override { return {2015, 12, 2, 8, 30, 0}; }
    double steadySeconds() const override { return 0; }
};

class ZeroRandom final : public platform::Random {
public:
    void reseed() override {}
    double next() override { return 0; }
    std::uint64_t bits() override { return bits_++; }

private:
    std::uint64_t bits_ = 0;
};

/// Records what a job tells, and asks it to stop once so many rows are done.
class RecordingHost : public JobHost {
public:
    PageLocation location{true, u"X:\\lan\\"};
    std::optional<std::size_t> stopAfter;

    std::vector<std::u16string> entries, progress, boxes, outcomes, questions, captions;
    bool agrees = false;
    bool windowClosed = false;
    std::size_t rowsBegun = 0;

    bool stopRequested() override { return stopAfter && rowsBegun >= *stopAfter; }
    void log(std::u16string_view entry) override { entries.emplace_back(entry); }
    void showProgress(std::u16string_view text, std::size_t, std::size_t) override {
        progress.emplace_back(text);
        if (text.starts_with(u"已处理: ")) {
            ++rowsBegun;
        }
    }
    void message(std::u16string_view title, std::u16string_view text) override {
        boxes.push_back(std::u16string(title) + u"|" + std::u16string(text));
    }
    void showOutcome(std::u16string_view text, std::size_t, std::size_t) override { outcomes.emplace_back(text); }
    bool confirm(std::u16string_view question) override {
        questions.emplace_back(question);
        return agrees;
    }
    void setCaption(std::u16string_view caption) override { captions.emplace_back(caption); }
    void closeWindow() override { windowClosed = true; }
    PageLocation pages() override { return location; }
    void yield() override {}
};

using Counts = std::vector<std::pair<std::string, std::size_t>>; ///< rows by reason
using Settings = std::map<std::u16string, std::u16string>;       ///< "Section.key" to value

/// A home folder, a crawl database and a destination on a disk in memory.
class JobTest : public testing::Test {
protected:
    JobTest() {
        files.writeFile(u"X:\\home\\ADMarks.txt", platform::encode936(u"诚信代理\r\n量大从优"));
        execute(kSource, {u"create table bbsforum (id int identity(1,1) NOT NULL, url varchar(255), content memo, "
                          u"cid int, sT varchar(255), sC memo)"});
        execute(kDest, {u"create table wxAll (id int identity(1,1) NOT NULL, url varchar(255), recTime datetime, "
                        u"sT varchar(255), sC memo, sA memo, cid int)"});
    }

    static constexpr std::u16string_view kSource = u"X:\\Comb.mdb";
    static constexpr std::u16string_view kDest = u"X:\\wxdb.mdb";

    platform::Platform platformOf(platform::FileSystem& system) { return {system, clock, random, u"X:\\home"}; }

    Context& context(const Settings& settings = {}) {
        if (!context_) {
            context_.emplace(platformOf(files), configuration(settings), ado::Environment::Options{});
        }
        return *context_;
    }

    static Configuration configuration(const Settings& settings) {
        return Configuration([&settings](std::u16string_view section, std::u16string_view key) {
            const auto found = settings.find(std::u16string(section) + u"." + std::u16string(key));
            return found == settings.end() ? std::u16string() : found->second;
        });
    }

    /// Carries the statements out; the database is made when it is missing.
    void execute(std::u16string_view path, std::initializer_list<std::u16string> statements) {
        auto at = platformOf(files);
        if (!files.fileExists(path)) {
            jet::Database::create(at, path)->commit();
        }
        ado::Environment environment(at, {});
        ado::Connection connection(environment);
        connection.Open(ado::jetConnectionString(path));
        for (const std::u16string& statement : statements) {
            connection.Execute(statement);
        }
        connection.Close();
    }

    /// The rows of a SELECT, fields joined by "|".
    std::vector<std::string> rows(std::u16string_view path, std::u16string_view select) {
        auto at = platformOf(files);
        ado::Environment environment(at, {});
        ado::Connection connection(environment);
        connection.mode = ado::Connection::Mode::Read;
        connection.Open(ado::jetConnectionString(path));
        ado::Recordset set;
        std::vector<std::string> lines;
        for (set.Open(select, connection); !set.Eof(); set.MoveNext()) {
            std::u16string line;
            for (std::size_t i = 0; i < set.fieldCount(); ++i) {
                line += i == 0 ? u"" : u"|";
                line += ado::isNull(set.value(i)) ? std::u16string(u"NULL") : ado::toText(set.value(i));
            }
            lines.push_back(platform::toUtf8(line));
        }
        return lines;
    }

    /// A crawled page: its row, and its file unless `posts` is empty. Page n of a thread is thread-T-n-1.
    void crawl(const std::u16string& page, std::initializer_list<std::u16string> posts, int cid = 28) {
        execute(kSource, {u"insert into bbsforum (url, content, cid) values ('http://b/thread-" + page + u".html', " +
                          u"'D:\\crawl\\" + page + u".htm', " + platform::fromUtf8(std::to_string(cid)) + u")"});
        if (posts.size() != 0) {
            saveFile(page, threadPage(u"标题" + page, posts));
        }
    }

    void saveFile(const std::u16string& page, std::u16string_view html) {
        files.writeFile(filePath(page), platform::encode936(html));
    }
    static std::u16string filePath(const std::u16string& page) { return u"X:\\lan\\crawl\\" + page + u".htm"; }

    /// What the extractor takes for a thread page with these posts.
    static std::u16string threadPage(const std::u16string& title, const std::vector<std::u16string>& posts) {
        std::u16string html =
            u"<title>" + title + u"</title>\r\n<h1 class=\"ts\"><a href=\"#\">" + title + u"</a></h1>";
        for (const std::u16string& post : posts) {
            html +=
                u"<div id=\"post_1234\"><table><tr><td class=\"t_f\" id=\"p\">" + post + u"</td></tr></table></div>";
        }
        return html + u"<div id=\"post_new\"></div>";
    }

    static std::u16string noticePage() { return u"<title>提示信息 -  维修论坛 -  Powered by Discuz! </title>"; }

    platform::MemoryFileSystem files;
    FixedClock clock;
    ZeroRandom random;
    RecordingHost host;

private:
    std::optional<Context> context_;
};

} // namespace kelb::jobs
