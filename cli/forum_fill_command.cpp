#include "jobs/forum_fill.h"

#include "cli/commands.h"
#include "cli/job_run.h"
#include "platform/utf8.h"

namespace kelb::cli {
namespace {

class ForumFillCommand final : public Command {
public:
    explicit ForumFillCommand(CLI::App& kelb)
        : Command(kelb.add_subcommand(jobs::kForumFillJob,
                                      "Fill title and body (sT, sC) of the thread pages of bbsforum (channel 40)")) {
        declared()
            .add_option("--source", source_, "Crawl database, which is changed [[Paths] fillDb]")
            ->type_name("DB");
        declared()
            .add_option("--lan-folder", lanFolder_,
                        "Folder below which the page files lie: the stored paths without their drive are put "
                        "straight behind it. Without it nothing can be filled")
            ->type_name("DIR");
        declared().footer("A row whose page is the board's notice page ([Forum] boardName) is deleted, with its page\n"
                          "file: see --trash and --dry-run. Common options: see kelb --help.");
    }

    int run(Program& program) override {
        return runJob(program, jobs::kForumFillJob, lanFolder_,
                      [this](jobs::Context& context, jobs::JobHost& host, jobs::JobSummary& summary) {
                          jobs::fillForumThreads({platform::fromUtf8(source_)}, context, host, summary);
                      });
    }

private:
    std::string source_;
    std::optional<std::string> lanFolder_;
};

} // namespace

CommandPointer makeForumFill(CLI::App& kelb) {
    return std::make_unique<ForumFillCommand>(kelb);
}

} // namespace kelb::cli
