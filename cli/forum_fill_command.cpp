#include "jobs/forum_fill.h"

#include "cli/commands.h"
#include "cli/job_command.h"
#include "platform/utf8.h"

namespace kelb::cli {
namespace {

class ForumFillCommand final : public JobCommand {
public:
    explicit ForumFillCommand(CLI::App& kelb)
        : JobCommand(kelb, jobs::kForumFillJob,
                     "Fill title and body (sT, sC) of the thread pages of bbsforum (channel 40)") {
        declared()
            .add_option("--source", source_, "Crawl database, which is changed [[Paths] fillDb]")
            ->type_name("DB");
        declareLanFolder("Folder that holds the page files; without it nothing can be filled");
        declareFooter("Stored page paths are put behind the LAN folder without their drive: D:\\forum\\a.htm is\n"
                      "forum/a.htm in it.\n"
                      "A row whose page is the board's notice page ([Forum] boardName) is deleted, with its page\n"
                      "file: see --trash and --dry-run.");
    }

private:
    void work(jobs::Context& context, jobs::JobHost& host, jobs::JobSummary& summary) override {
        jobs::fillForumThreads({platform::fromUtf8(source_)}, context, host, summary);
    }

    std::string source_;
};

} // namespace

CommandPointer makeForumFill(CLI::App& kelb) {
    return std::make_unique<ForumFillCommand>(kelb);
}

} // namespace kelb::cli
