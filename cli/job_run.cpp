#include "cli/job_run.h"

#include "cli/console_host.h"
#include "jobs/page_files.h"
#include "jobs/run_report.h"
#include "platform/path_map.h"
#include "platform/utf8.h"

#include <iostream>

namespace kelb::cli {
namespace {

/// A report that could not be written is told before the job, not after hours of it.
void checkReport(platform::FileSystem& disk, const std::u16string& path) {
    const auto refuse = [&path](const char* why) {
        throw platform::FileError(platform::FileError::Kind::NotFound, "write the report", path, 0, why);
    };
    if (const std::u16string folder(platform::parentFolder(path)); !folder.empty() && !disk.folderExists(folder)) {
        refuse("there is no such folder");
    }
    if (disk.folderExists(path)) {
        refuse("it is a folder; name a file, such as report.html");
    }
}

} // namespace

JobCommand::JobCommand(CLI::App* declared) : Command(declared) {
    this->declared()
        .add_option("--report", report_, "Write what became of the rows, and why, to this HTML page")
        ->type_name("FILE");
}

int JobCommand::runJob(Program& program, const std::string& name, const std::optional<std::string>& lanFolder,
                       const JobBody& body) const {
    jobs::Context& context = program.context();
    const std::u16string report = platform::fromUtf8(report_);
    if (!report.empty()) {
        checkReport(program.disk(), report);
    }
    jobs::PageLocation pages;
    if (lanFolder) {
        pages = {true, jobs::lanFolderText(context.platform().files, platform::fromUtf8(*lanFolder))};
    }
    const platform::InterruptWatch interrupt;
    platform::Clock& clock = context.platform().clock;
    ProgressLine progress(ProgressLine::styleFor(program.options().quiet), clock, std::cerr);
    jobs::RunLog runLog(context.platform(), context.configuration().text(jobs::Setting::SafetyLogFile));
    ConsoleHost host({std::cout, std::cerr, progress, runLog, interrupt}, pages, program.options().yes);
    jobs::JobSummary summary(name);
    summary.dryRun = program.options().dryRun;
    jobs::RunCircumstances run{clock.now()};
    const double begun = clock.steadySeconds();
    const auto end = [&] {
        progress.finish();
        summary.seconds = clock.steadySeconds() - begun;
        if (!program.options().noSummary) {
            std::cout << jobs::toJson(summary) << std::endl;
        }
    };
    try {
        if (lanFolder && !context.platform().files.folderExists(pages.lanFolder)) {
            host.warning(u"There is no folder " + pages.lanFolder + u" (--lan-folder): no page file will be found.");
        }
        body(context, host, summary);
    } catch (const std::exception& error) {
        runLog.addLast(platform::fromUtf8(error.what()));
        end();
        if (!report.empty()) {
            try {
                run.error = error.what();
                program.disk().replaceFile(report, jobs::reportPage(summary, run));
            } catch (const platform::FileError& second) { // what ended the job is the error to end with
                std::cerr << "kelb: " << second.what() << '\n';
            }
        }
        throw;
    }
    runLog.flush();
    end();
    if (!report.empty()) {
        program.disk().replaceFile(report, jobs::reportPage(summary, run));
    }
    return summary.stopped ? kStopped : kDone;
}

} // namespace kelb::cli
