#include "jobs/template_extract.h"

#include "jobs/database_paths.h"
#include "jobs/job_error.h"
#include "jobs/row_reasons.h"
#include "platform/clock.h"
#include "platform/path_map.h"
#include "platform/utf8.h"

#include <algorithm>

namespace kelb::jobs {

using extract::FrmExtractor;
using extract::TemplateRow;

namespace {

constexpr double kWaitSlice = 0.05; // seconds between looks for a stop request

/// The extractor's window as the command line has it: labels are log entries, the stop request is the interrupt box.
class JobView final : public extract::ExtractorView {
public:
    JobView(JobHost& host, JobSummary& summary, bool slow) : host_(host), summary_(summary), slow_(slow) {}

    void showModel(const extract::TemplateModel&) override {}
    void showHits(const extract::Alignment&) override {}
    void showPath(std::u16string_view) override {}
    void showBody(std::u16string_view) override {}
    void showResult(std::u16string_view text) override { host_.log(text); }
    void showPhase(std::u16string_view text) override { host_.log(text); }
    void rowDone(TemplateRow row, std::u16string_view url) override {
        ++summary_.rows;
        count(row, url);
        host_.showProgress(u"", std::min(summary_.rows, total_), total_);
    }
    bool interrupted() override {
        summary_.stopped = summary_.stopped || host_.stopRequested();
        return summary_.stopped;
    }
    bool slow() override { return slow_; }
    void switchTimer(bool on) override { timer_ = on; }
    void message(std::u16string_view title, std::u16string_view text) override { host_.message(title, text); }
    void yield() override { host_.yield(); }

    bool timerRuns() const noexcept { return timer_; }
    void expectRows(std::size_t total) noexcept { total_ = total; }

private:
    void count(TemplateRow row, std::u16string_view url) {
        switch (row) {
        case TemplateRow::Saved:
            summary_.save(url);
            break;
        case TemplateRow::NoPageFile:
            summary_.skip(kNoPageFile, url);
            break;
        case TemplateRow::TooShort:
            summary_.skip(kTooShort, url);
            break;
        case TemplateRow::TooLong:
            summary_.skip(kOverLong, url);
            break;
        case TemplateRow::WarmUp:
            summary_.skip(kWarmUp, url);
            break;
        case TemplateRow::Rewound:
            summary_.skip(kStartsAgain, url);
            break;
        }
    }

    JobHost& host_;
    JobSummary& summary_;
    bool slow_;
    bool timer_ = false;
    std::size_t total_ = 0;
};

/// A tick each [Template] timerMs until the extractor switches the timer off.
void runSlowly(FrmExtractor& extractor, JobView& view, Context& context) {
    const platform::Clock& clock = context.platform().clock;
    const double interval = static_cast<double>(context.configuration().number(Setting::TemplateTimerMs)) / 1000;
    extractor.Command1_Click();
    while (view.timerRuns()) {
        for (double waited = 0; waited < interval && !view.interrupted(); waited += kWaitSlice) {
            clock.sleep(std::min(kWaitSlice, interval - waited));
            view.yield();
        }
        extractor.Timer1_Timer();
    }
}

std::u16string destinationOf(std::u16string_view given, Context& context) {
    std::u16string path(given);
    if (path.empty()) {
        path = templateProposals(context.configuration()).destination;
        if (!context.platform().files.fileExists(path)) {
            throw JobError(platform::toUtf8(u"找不到目的数据库: " + path) +
                           ". Name the destination database, or set [Setup] adultFolder to its folder.");
        }
    }
    return path;
}

bool isRelative(std::u16string_view path) {
    return !platform::isWindowsPath(path) && !path.starts_with(u'/') && !path.starts_with(u'\\');
}

} // namespace

std::u16string modelPagePath(std::u16string_view given, Context& context) {
    if (!given.empty()) {
        return std::u16string(given);
    }
    const std::u16string& path = context.configuration().text(Setting::TemplateModelPage);
    return isRelative(path) ? platform::joinPath(context.platform().applicationFolder, path) : path;
}

extract::FrmExtractor::Parts extractorParts(Context& context) {
    TemplateWorkflow& workflow = context.templateWorkflow();
    return {.rsSource = workflow.rsSource(),
            .rsDest = workflow.rsDest(),
            .destination = workflow.destination(),
            .readPage = [pages = context.pageFiles()](std::u16string_view path,
                                                      std::u16string& page) mutable { return pages.read(path, page); },
            .clock = context.platform().clock,
            .siteName = context.configuration().text(Setting::TemplateSiteName)};
}

void extractByTemplate(const TemplateExtractOptions& options, Context& context, JobHost& host, JobSummary& summary) {
    TemplateWorkflow& workflow = context.templateWorkflow();
    workflow.open({.source = sourceDatabase(options.source, context.configuration(), context.platform().files),
                   .destination = destinationOf(options.dest, context),
                   .destinationTable = options.destTable});
    summary.source = {workflow.chosen()->source, std::u16string(kTemplateSourceTable), u"url"};
    JobView view(host, summary, options.slow);
    FrmExtractor extractor(extractorParts(context), view);
    if (!extractor.readModel(modelPagePath(options.model, context))) {
        throw JobError("the model page " + platform::toUtf8(modelPagePath(options.model, context)) +
                       " is empty; save a page of the site there");
    }
    // The rows of the warm-up come again.
    view.expectRows(workflow.rsSource().RecordCount());
    if (options.slow) {
        runSlowly(extractor, view, context);
    } else {
        do {
            extractor.Command1_Click();
        } while (!extractor.atEnd() && !summary.stopped);
    }
    if (extractor.longPages() <= FrmExtractor::kWarmUpPages && !summary.stopped) {
        summary.note = "fewer than 106 pages with 100 characters or more: nothing can be saved";
    }
    workflow.close();
}

} // namespace kelb::jobs
