#include "jobs/dedupe_source.h"

#include "ado/connection_string.h"
#include "jobs/database_paths.h"
#include "jobs/forum_pages.h"
#include "jobs/job_error.h"
#include "jobs/page_keys.h"
#include "jobs/row_loop.h"
#include "jobs/row_reasons.h"
#include "jobs/table_check.h"
#include "platform/file_system.h"
#include "platform/text.h"
#include "platform/utf8.h"

#include <algorithm>
#include <array>
#include <optional>
#include <unordered_map>

namespace kelb::jobs {
namespace {

/// Rows below this number show their id each, later ones every fifth.
constexpr std::size_t kShownSeldom = 10000;
constexpr std::size_t kSeldom = 5;
constexpr std::size_t kClearlyLonger = 2; // UTF-16 code units: a title must be more than this longer to win

constexpr std::array<std::u16string_view, 3> kBlockedTitles = {u"Database Error", u"安全检查! | 百度云加速",
                                                               u"503 Service Unavailable"};

bool isBlocked(std::u16string_view title) {
    return std::any_of(kBlockedTitles.begin(), kBlockedTitles.end(),
                       [title](std::u16string_view marker) { return title.find(marker) != title.npos; });
}

/// Names of counts in the summary: rows of each site, in the order of PageKeys::Site.
constexpr std::array<std::string_view, 4> kSiteCounts = {"forumRows", "articleRows", "publicForumRows", "otherRows"};

/// The row that holds a key.
struct Registered {
    std::u16string path;                 ///< of its page file
    std::optional<std::u16string> title; ///< read when the first copy turns up
};

class DedupeSource {
public:
    DedupeSource(const DedupeSourceOptions& options, Context& context, JobHost& host, JobSummary& summary)
        : host_(host), summary_(summary), disk_(context.platform().files),
          maxMissingPercent_(context.configuration().number(Setting::SafetyMaxDeletePercent)),
          keys_(context.configuration()), sourcePath_(sourceDatabase(options.source, context.configuration(), disk_)),
          source_(context.databases()), pages_(context.pageFiles()), disposal_(context.disposal(kDedupeSourceJob)) {}

    void run() {
        open();
        host_.log(u"共选取记录: " + number(total_) + u"条!");
        if (mayGoOn()) {
            walkRows({.rows = rows_, .connections = {&source_}, .countLine = RowWalk::CountLine::None}, host_, summary_,
                     [this](std::size_t i) { visit(i); });
        }
        for (std::size_t site = 0; site < kSiteCounts.size(); ++site) {
            if (siteRows_[site] != 0) {
                summary_.counts.emplace_back(kSiteCounts[site], siteRows_[site]);
            }
        }
        rows_.Close();
        source_.Close();
        disposal_->finish();
        host_.setCaption(u"完成");
        host_.message(kProgramTitle, u"去除重复的操作已完成！");
    }

private:
    static std::u16string number(std::size_t count) { return platform::number(static_cast<long long>(count)); }

    void open() {
        source_.mode = ado::Connection::Mode::Write;
        source_.Open(ado::jetConnectionString(sourcePath_));
        TableCheck check;
        check.need(source_, sourcePath_, kForumTable, {u"id", u"url", u"content"});
        check.finish();
        rows_.Open(u"select * from " + std::u16string(kForumTable) + u" ORDER BY ID DESC", source_,
                   ado::CursorType::Keyset, ado::LockType::Optimistic);
        idField_ = rows_.fieldIndex(u"ID");
        urlField_ = rows_.fieldIndex(u"url");
        contentField_ = rows_.fieldIndex(u"content");
        total_ = rows_.RecordCount();
        summary_.source = {sourcePath_, std::u16string(kForumTable), u"url"};
    }

    /// A share that is offline makes every page file look missing, and would empty the table. False at a stop.
    bool mayGoOn() {
        std::size_t missing = 0;
        for (std::size_t i = 1; !rows_.Eof(); ++i, rows_.MoveNext()) {
            host_.yield();
            if (host_.stopRequested()) {
                summary_.stopped = true;
                return false;
            }
            host_.showProgress(u"检查页面文件: " + number(i), i, total_);
            if (!disk_.fileExists(pagePath())) {
                ++missing;
            }
        }
        rows_.MoveFirst();
        const auto limit = static_cast<std::size_t>(maxMissingPercent_);
        if (missing * 100 > total_ * limit &&
            !host_.confirm(number(total_) + u" 条记录中有 " + number(missing) + u" 条没有页面文件（超过 " +
                           number(limit) +
                           u"%），继续就会删除这些记录。\n"
                           u"页面文件夹也许没有连接，或者填写有误，或者没有勾选。仍要继续吗？")) {
            refuse(missing);
        }
        return true;
    }

    [[noreturn]] void refuse(std::size_t missing) {
        const PageLocation location = host_.pages();
        throw Refused("nothing was done: " + std::to_string(missing) + " of " + std::to_string(total_) +
                      " rows have no page file and would be deleted, more than " + std::to_string(maxMissingPercent_) +
                      " % (" + settingName(Setting::SafetyMaxDeletePercent) + "). " +
                      (location.lanMode ? "Is the LAN folder " + platform::toUtf8(location.lanFolder) +
                                              " right, and its share online?"
                                        : "No LAN folder is named (--lan-folder), so no page file is found.") +
                      " --yes goes on all the same.");
    }

    std::u16string pagePath() {
        rows_.text(contentField_, storedPath_);
        return PageFiles::path(host_.pages(), storedPath_);
    }

    void visit(std::size_t i) {
        id_ = ado::toText(rows_.value(idField_));
        if (i < kShownSeldom || i % kSeldom == 0) {
            host_.showProgress(u"id: " + id_, i, total_);
        }
        path_ = pagePath();
        hasUrl_ = rows_.text(urlField_, url_);
        hasFile_ = disk_.fileExists(path_);
        if (!hasUrl_) {
            remove(u"IsNull(RS001(\"url\")) = Ttur", kNullUrl); // the text is known so, slip of the pen included. Kept
        } else if (!hasFile_) {
            remove(u"文件未找到: " + path_, kNoPageFile);
        } else if (url_.empty()) {
            remove(u"URL Field is blank.", kBlankUrl);
        } else {
            judge();
        }
    }

    void judge() {
        const PageKeys::Site site = keys_.siteOf(url_);
        ++siteRows_[static_cast<std::size_t>(site)];
        const auto key = PageKeys::keyOf(url_, site);
        if (!key) {
            remove(u"不符合格式：*thread*-[1-9]-*  Url: " + url_, kNotAThreadPage);
            return;
        }
        const auto registered = registered_.find(std::u16string(*key));
        if (registered != registered_.end()) {
            compare(registered->second);
        } else if (keys_.isRouter(url_)) {
            remove(u"网络无法访问时，跳转到路由器页面。", kRouterPage);
        } else {
            registered_.emplace(*key, Registered{path_, std::nullopt});
            summary_.skip(kKept, url_);
        }
    }

    /// "Old" and "new" name the order of visiting: rows come newest first, so that the old one is the newer row and, at
    /// equal titles, the one that stays. Kept.
    void compare(Registered& old) {
        if (!old.title) {
            // A row before this one may have had the same file and taken it along.
            old.title = disk_.fileExists(old.path) ? pages_.title(old.path) : std::u16string();
        }
        std::u16string title = pages_.title(path_);
        if (title == *old.title) {
            remove(u"重复: " + url_, kDuplicate);
        } else if (isBlocked(title)) {
            remove(u"标题不合格: " + title, kBlockedTitle);
        } else if (isBlocked(*old.title) || title.size() > old.title->size() + kClearlyLonger) {
            const std::u16string entry = u"O: kill " + *old.title + u"\r\nN: " + title + u"\r\n\r\n";
            if (disk_.fileExists(old.path)) {
                removeFile(old.path);
            }
            old = {path_, std::move(title)};
            host_.log(entry);
            summary_.skip(kKept, url_);
        } else {
            host_.log(u"O: " + *old.title + u"\r\nN: kill " + title + u"\r\n\r\n");
            remove(u"重复（标题不同）: " + url_, kDuplicateWithOtherTitle);
        }
    }

    void remove(const std::u16string& reason, std::string_view countedAs) {
        if (hasFile_) {
            removeFile(path_); // before its row: one that cannot go ends the job with the row in place
        }
        disposal_->deleteRow(rows_, {sourcePath_, kForumTable});
        ++summary_.deletedRows;
        summary_.skip(countedAs, hasUrl_ ? std::u16string_view(url_) : std::u16string_view(id_));
        host_.log(id_ + u" 已删除：" + reason);
    }

    void removeFile(const std::u16string& path) {
        disposal_->deleteFile(path, host_.pages().lanFolder);
        ++summary_.deletedFiles;
    }

    JobHost& host_;
    JobSummary& summary_;
    platform::FileSystem& disk_;
    long maxMissingPercent_;
    PageKeys keys_; // first of those that may refuse: nothing is opened before
    std::u16string sourcePath_;
    ado::Connection source_; // before the record set, which is closed first
    ado::Recordset rows_;
    PageFiles pages_;
    std::unique_ptr<Disposal> disposal_;
    std::size_t idField_ = 0, urlField_ = 0, contentField_ = 0;
    std::size_t total_ = 0; // rows selected
    std::unordered_map<std::u16string, Registered> registered_;
    std::array<std::size_t, kSiteCounts.size()> siteRows_{};
    std::u16string id_, url_, storedPath_, path_; ///< of the current row
    bool hasUrl_ = false, hasFile_ = false;
};

} // namespace

void dedupeSource(const DedupeSourceOptions& options, Context& context, JobHost& host, JobSummary& summary) {
    DedupeSource(options, context, host, summary).run();
}

} // namespace kelb::jobs
