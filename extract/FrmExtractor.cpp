#include "extract/FrmExtractor.h"

#include "extract/Prog_Copy.h"
#include "extract/Prog_Dz.h"
#include "platform/file_error.h"
#include "platform/text.h"

#include <utility>

namespace kelb::extract {
namespace {

constexpr std::size_t kShortestBody = 100; // UTF-16 code units
constexpr std::size_t kTooLongBody = 8000;
constexpr std::size_t kTitleCut = 200;
constexpr std::int32_t kEndsTick = 100; // a tick of the timer ends behind a longer body
constexpr std::size_t kLongestPath = 260;
constexpr std::u16string_view kBoxTitle = u"内容管理";

/// `content` of other crawls holds the page itself.
bool namesFile(std::u16string_view content) {
    return !content.empty() && content.size() <= kLongestPath &&
           content.find_first_of(u"\r\n") == std::u16string_view::npos;
}

std::u16string titleOf(std::u16string_view page) {
    const std::u16string title = platform::replaceAll(Prog_Dz::extTitleTag(page), u"<br>", u"");
    return std::u16string(platform::left(title, kTitleCut));
}

/// Sets a flag for as long as it lives.
class Busy {
public:
    explicit Busy(bool& flag) : flag_(flag) { flag_ = true; }
    ~Busy() { flag_ = false; }
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

private:
    bool& flag_;
};

} // namespace

FrmExtractor::FrmExtractor(Parts parts, ExtractorView& view)
    : parts_(std::move(parts)), view_(view), extractor_(parts_.siteName, &view) {}

bool FrmExtractor::readModel(std::u16string_view path) {
    std::u16string page;
    if (!parts_.readPage(path, page)) {
        throw platform::FileError(platform::FileError::Kind::NotFound, "read the model page", path, 0,
                                  "there is no such file; name a saved page of the site");
    }
    if (page.empty()) {
        view_.message(kBoxTitle, u"模版为空");
        return false;
    }
    model_ = std::make_unique<const TemplateModel>(std::move(page));
    view_.showModel(*model_);
    return true;
}

std::int32_t FrmExtractor::extContent() {
    content_.clear();
    TemplateRow became = TemplateRow::NoPageFile;
    try {
        became = extractRow();
    } catch (...) {
        parts_.rsDest.CancelUpdate();
        throw;
    }
    parts_.rsSource.MoveNext();
    parts_.destination.flushIfDue();
    view_.rowDone(became, url_);
    return became == TemplateRow::WarmUp ? -1 : static_cast<std::int32_t>(content_.size());
}

TemplateRow FrmExtractor::extractRow() {
    url_ = parts_.rsSource.text(u"url");
    const std::u16string path = parts_.rsSource.text(u"content");
    readBody(path);
    const std::u16string length = platform::number(static_cast<long long>(content_.size()));
    if (content_.size() < kShortestBody) {
        view_.showResult(u"内容过少! " + length + u" " + url_);
        return page_.empty() ? TemplateRow::NoPageFile : TemplateRow::TooShort;
    }
    view_.showResult(u"正常提取! " + length + u" " + url_);
    view_.showPath(path);
    view_.showBody(content_);
    const TemplateRow became = useBody(url_);
    ++longPages_;
    return became;
}

/// Title and body of the page at a path; without a file or a body in it both are empty.
void FrmExtractor::readBody(std::u16string_view path) {
    page_.clear();
    if (!namesFile(path) || !parts_.readPage(path, page_)) {
        return;
    }
    const std::size_t start = bodyStart(page_);
    if (start == std::u16string::npos) {
        page_.clear();
        return;
    }
    title_ = titleOf(page_);
    const std::u16string_view body = std::u16string_view(page_).substr(start);
    view_.showHits(model_->align(body)); // decides nothing
    std::vector<std::u16string> lines;
    if (Prog_Copy::CopyRemoveHTML2(body, lines) > 0) {
        std::u16string firstLine; // dropped. Kept
        extractor_.extC(lines, firstLine, content_);
    }
}

TemplateRow FrmExtractor::useBody(std::u16string_view url) {
    const std::u16string count = platform::number(longPages_);
    if (longPages_ < kWarmUpPages) {
        view_.showPhase(u"预处理! " + count);
        view_.yield();
        return TemplateRow::WarmUp;
    }
    if (longPages_ == kWarmUpPages) {
        // The usual move to the next row follows, so that saving starts with the second row. Kept
        parts_.rsSource.MoveFirst();
        return TemplateRow::Rewound;
    }
    view_.showPhase(u"正式处理! " + count);
    if (content_.size() >= kTooLongBody) {
        view_.showPhase(u"内容过长! " + count);
        return TemplateRow::TooLong;
    }
    save(url);
    return TemplateRow::Saved;
}

void FrmExtractor::save(std::u16string_view url) {
    ado::Recordset& row = parts_.rsDest;
    row.AddNew();
    row.set(u"url", url);
    row.set(u"cid", parts_.rsSource.hasField(u"cid") ? parts_.rsSource.value(u"cid") : ado::Value());
    row.set(u"sT", title_);
    row.set(u"sC", content_);
    row.set(u"beginPos", ado::Value(std::int32_t{0}));
    row.set(u"beginStr", u""); // no operation finds a begin text
    row.set(u"recTime", ado::fromDateTime(parts_.clock.now()));
    row.Update();
}

void FrmExtractor::CmdNxt_Click() {
    if (!atEnd()) {
        extContent();
    }
}

void FrmExtractor::Command5_Click() {
    ado::Recordset& rows = parts_.rsSource;
    for (int i = 0; i < 2 && !rows.Bof(); ++i) {
        rows.MovePrevious();
    }
    if (rows.Bof() && !rows.Eof()) {
        rows.MoveFirst();
    }
}

void FrmExtractor::Command1_Click() {
    if (view_.slow()) {
        view_.switchTimer(true);
        return;
    }
    const std::size_t count = parts_.rsSource.RecordCount();
    for (std::size_t i = 0; i < count && !view_.interrupted() && !atEnd(); ++i) {
        CmdNxt_Click();
        view_.yield();
    }
    view_.message(kBoxTitle, u"执行完毕！");
}

void FrmExtractor::Timer1_Timer() {
    if (ticking_) {
        return;
    }
    const Busy busy(ticking_);
    runTick();
}

void FrmExtractor::runTick() {
    const std::size_t count = parts_.rsSource.RecordCount();
    for (std::size_t i = 0; i < count; ++i) {
        if (view_.interrupted() || atEnd()) {
            break;
        }
        if (extContent() > kEndsTick) {
            return;
        }
        view_.yield();
    }
    if (view_.interrupted() || atEnd()) {
        view_.switchTimer(false);
        view_.message(kBoxTitle, u"完成");
    }
}

} // namespace kelb::extract
