#include "cli/job_run.h"

#include "cli/command.h"
#include "cli/console_host.h"
#include "jobs/page_files.h"
#include "platform/utf8.h"

#include <iostream>

namespace kelb::cli {
int runJob(Program& program, const std::string& name, const std::optional<std::string>& lanFolder,
           const JobBody& body) {
    jobs::Context& context = program.context();
    jobs::PageLocation pages;
    if (lanFolder) {
        pages = {true, jobs::lanFolderText(context.platform().files, platform::fromUtf8(*lanFolder))};
    }
    const platform::InterruptWatch interrupt;
    ProgressLine progress(ProgressLine::styleFor(program.options().quiet), context.platform().clock, std::cerr);
    jobs::RunLog runLog(context.platform(), context.configuration().text(jobs::Setting::SafetyLogFile));
    ConsoleHost host({std::cout, std::cerr, progress, runLog, interrupt}, pages, program.options().yes);
    jobs::JobSummary summary(name);
    summary.dryRun = program.options().dryRun;
    const double begun = context.platform().clock.steadySeconds();
    const auto end = [&] {
        progress.finish();
        summary.seconds = context.platform().clock.steadySeconds() - begun;
        if (!program.options().noSummary) {
            std::cout << jobs::toJson(summary) << std::endl;
        }
    };
    try {
        body(context, host, summary);
    } catch (const std::exception& error) {
        runLog.addLast(platform::fromUtf8(error.what()));
        end();
        throw;
    }
    runLog.flush();
    end();
    return summary.stopped ? kStopped : kDone;
}

} // namespace kelb::cli
