#include "cli/job_command.h"

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

/// Of a run that an error has ended, which is the one to end with.
void writeLastReport(platform::FileSystem& disk, const std::u16string& path, const std::string& page) {
    try {
        disk.replaceFile(path, page);
    } catch (const platform::FileError& second) {
        std::cerr << "kelb: " << second.what() << '\n';
    }
}

} // namespace

JobCommand::JobCommand(CLI::App& kelb, const std::string& name, const std::string& purpose)
    : Command(kelb.add_subcommand(name, purpose)), name_(name) {
    declared()
        .add_option("--report", report_, "Write what became of the rows, and why, to this HTML page")
        ->type_name("FILE");
}

void JobCommand::declareLanFolder(const std::string& description) {
    declared().add_option("--lan-folder", lanFolder_, description)->type_name("DIR");
}

void JobCommand::declareFooter(const std::string& text) {
    declared().footer(text + "\nCommon options: see kelb --help.");
}

jobs::PageLocation JobCommand::pages(Program& program) const {
    if (!lanFolder_) {
        return {};
    }
    return {true, jobs::lanFolderText(program.platform().files, platform::fromUtf8(*lanFolder_))};
}

int JobCommand::run(Program& program) {
    const std::u16string report = platform::fromUtf8(report_);
    if (!report.empty()) {
        checkReport(program.disk(), report);
    }
    const platform::InterruptWatch interrupt;
    platform::Clock& clock = program.platform().clock;
    ProgressLine progress(ProgressLine::styleFor(program.options().quiet), clock, std::cerr);
    jobs::RunLog runLog(program.platform(), program.context().configuration().text(jobs::Setting::SafetyLogFile));
    const jobs::PageLocation location = pages(program);
    ConsoleHost host({std::cout, std::cerr, progress, runLog, interrupt}, location, program.options().yes);
    jobs::JobSummary summary(name_);
    summary.dryRun = program.options().dryRun;
    jobs::RunCircumstances circumstances{clock.now()};
    const double begun = clock.steadySeconds();
    const auto tellSummary = [&] {
        progress.finish();
        summary.seconds = clock.steadySeconds() - begun;
        if (!program.options().noSummary) {
            std::cout << jobs::toJson(summary) << std::endl;
        }
    };
    try {
        if (location.lanMode && !program.platform().files.folderExists(location.lanFolder)) {
            host.warning(u"There is no folder " + location.lanFolder + u" (--lan-folder): no page file will be found.");
        }
        work(program.context(), host, summary);
        runLog.flush();
    } catch (const std::exception& error) {
        runLog.addLast(platform::fromUtf8(error.what()));
        tellSummary();
        if (!report.empty()) {
            circumstances.error = error.what();
            writeLastReport(program.disk(), report, jobs::reportPage(summary, circumstances));
        }
        throw;
    }
    tellSummary();
    if (!report.empty()) {
        program.disk().replaceFile(report, jobs::reportPage(summary, circumstances));
    }
    return summary.stopped ? kStopped : kDone;
}

} // namespace kelb::cli
