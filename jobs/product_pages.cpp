#include "jobs/product_pages.h"

#include "ado/recordset.h"
#include "platform/file_error.h"
#include "platform/file_system.h"
#include "platform/text.h"
#include "platform/utf8.h"
#include "store/ClsIO.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <vector>

namespace kelb::jobs {
namespace {

std::u16string shown(std::size_t count) {
    return platform::number(static_cast<long long>(count));
}

std::u16string shown(std::int16_t number) {
    return platform::number(number);
}

/// A page that cannot be read is an empty one, and the user is told.
std::u16string unreadable(const platform::FileError& error, JobHost& host) {
    host.warning(u"This page is passed over: " + platform::fromUtf8(error.what()));
    return {};
}

class FolderPages final : public ProductPages {
public:
    FolderPages(std::u16string_view folder, Context& context, JobHost& host)
        : folder_(folder), files_(context.platform().files), host_(host),
          noValueUrl_(context.configuration().text(Setting::ParamsNoValueUrl)),
          store_(files_, context.configuration().pageEncoding(), {}, host, store::ClsIO::Keeping::OnRequest) {
        store_.onUnusableName = [this](std::u16string_view path) {
            host_.warning(u"This file is passed over, since its name holds a |: " + std::u16string(path));
        };
        if (!folder_.ends_with(u'\\')) {
            folder_ += u'\\';
        }
        const store::PagePlace place = store::readPlace(files_, folder_).value_or(store::PagePlace());
        if (place != store::PagePlace()) {
            host_.warning(u"The walk over " + folder_ + u" goes on in sub-folder " + shown(place.folderNo) +
                          u", from its first file on; " + shown(place.fileNo) +
                          u" of its files were read before. To begin anew: kelb counter reset");
        }
        total_ = callsFrom(place);
    }

    State next() override {
        try {
            text_ = store_.nxtArticleV2(folder_);
        } catch (const platform::FileError& error) {
            if (store_.page().empty() || error.path() != store_.page()) {
                throw; // the counter file, or the folder itself
            }
            text_ = unreadable(error, host_);
        }
        if (text_ == store::kFileLoopOver && store_.page().empty()) {
            over_ = true;
            return State::WalkEnds;
        }
        return store_.page().empty() ? State::NoMore : State::Page;
    }
    std::u16string name() const override { return store_.page(); }
    std::u16string url() const override { return noValueUrl_; }
    std::size_t total() const override { return total_; }
    void keepPlace() override { store_.keepPlace(); }

    void finish(JobSummary& summary) override {
        const std::size_t unread = store_.passedOver() + (over_ ? filesBehindTheEnd() : 0);
        summary.counts.emplace_back("unreadFiles", unread);
        if (unread > 0) {
            host_.warning(u"Files that the walk has not reached: " + shown(unread) +
                          u" (a sub-folder gives 1000 files, and a missing sub-folder number ends the walk). Move them "
                          u"to sub-folders of their own, then: kelb counter reset");
        }
        if (over_) {
            if (summary.rows == 0) {
                summary.note = "the walk over the folder has come to its end: begin anew with kelb counter reset";
            }
            return;
        }
        if (const auto& place = store_.place()) {
            host_.warning(u"The walk was ended in sub-folder " + shown(place->folderNo) + u" behind " +
                          shown(place->fileNo) + u" files; the next run goes on there");
        }
    }

private:
    /// How often the store will answer: a sub-folder of less than 1,000 files has one answer more, which ends it.
    std::size_t callsFrom(store::PagePlace place) {
        constexpr std::size_t kCallsOfAFolder = 1000;
        std::size_t calls = 0;
        for (std::size_t before = static_cast<std::size_t>(place.fileNo),
                         number = static_cast<std::size_t>(place.folderNo);
             files_.folderExists(folder_ + shown(number)); ++number, before = 0) {
            host_.yield(); // a share takes its time
            const std::vector<std::u16string> names = files_.listFiles(folder_ + shown(number));
            const auto files =
                static_cast<std::size_t>(std::count_if(names.begin(), names.end(), store::ClsIO::isUsableName));
            calls += std::min(files + 1, before < kCallsOfAFolder ? kCallsOfAFolder - before : 1);
        }
        return calls;
    }

    /// Files in sub-folders whose number lies behind the one that is missing.
    std::size_t filesBehindTheEnd() {
        std::size_t count = 0;
        for (const std::u16string& name : files_.listFolders(folder_)) {
            const std::string digits = platform::toUtf8(name);
            int number = -1;
            const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
            if (error == std::errc() && end == digits.data() + digits.size() && number > store_.place()->folderNo) {
                count += files_.listFiles(folder_ + name).size();
            }
        }
        return count;
    }

    std::u16string folder_;
    platform::FileSystem& files_;
    JobHost& host_;
    std::u16string noValueUrl_;
    store::ClsIO store_;
    std::size_t total_ = 0;
    bool over_ = false;
};

class RowPages final : public ProductPages {
public:
    RowPages(ado::Recordset& rows, Context& context, JobHost& host)
        : rows_(rows), host_(host), files_(context.pageFiles()), total_(rows.RecordCount()) {}

    State next() override {
        if (begun_ && !rows_.Eof()) {
            rows_.MoveNext();
        }
        begun_ = true;
        if (rows_.Eof() || rows_.Bof()) {
            return State::WalkEnds;
        }
        const PageLocation location = host_.pages();
        lanModeSeen_ = lanModeSeen_ || location.lanMode;
        path_ = PageFiles::path(location, rows_.text(u"content"));
        try {
            files_.read(path_, text_);
        } catch (const platform::FileError& error) {
            text_ = unreadable(error, host_);
        }
        return State::Page;
    }
    std::u16string name() const override { return path_; }
    std::u16string url() const override { return rows_.text(u"url"); }
    std::u16string row() const override { return url(); }
    std::size_t total() const override { return total_; }

    void finish(JobSummary& summary) override {
        if (total_ == 0) {
            summary.note = "no row of the source is a parameter page of the portal";
        } else if (!lanModeSeen_ && summary.rows > 0) {
            summary.note = "LAN mode is off: nothing can be imported";
        }
    }

private:
    ado::Recordset& rows_;
    JobHost& host_;
    PageFiles files_;
    std::size_t total_;
    std::u16string path_;
    bool begun_ = false;
    bool lanModeSeen_ = false;
};

} // namespace

std::unique_ptr<ProductPages> pagesOfFolder(std::u16string_view folder, Context& context, JobHost& host) {
    return std::make_unique<FolderPages>(folder, context, host);
}

std::unique_ptr<ProductPages> pagesOfRows(ado::Recordset& rows, Context& context, JobHost& host) {
    return std::make_unique<RowPages>(rows, context, host);
}

} // namespace kelb::jobs
