#include "jobs/forum_fill.h"

#include "cli/commands.h"
#include "cli/job_run.h"
#include "platform/utf8.h"

namespace kelb::cli {
namespace {

class ForumFillCommand final : public JobCommand {
public:
    explicit ForumFillCommand(CLI::App& kelb)
        : JobCommand(kelb.add_subcommand(jobs::kForumFillJob,
                                         "Fill title and body (sT, sC) of the thread pages of bbsforum (channel 40)")) {
        declared()
            .add_option("--source", source_, "Crawl database, which is changed [[Paths] fillDb]")
            ->type_name("DB");
        declared()
            .add_option("--lan-folder", lanFolder_,
                        "Folder that holds the page files; without it nothing can be filled")
            ->type_name("DIR");
        declared().footer("Stored page paths are put behind the LAN folder without their drive: D:\\forum\\a.htm is\n"
                          "forum/a.htm in it.\n"
                          "A row whose page is the board's notice page ([Forum] boardName) is deleted, with its page\n"
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
