#include "jobs/forum_import.h"

#include "cli/commands.h"
#include "cli/job_command.h"
#include "platform/utf8.h"

namespace kelb::cli {
namespace {

class ForumImportCommand final : public JobCommand {
public:
    explicit ForumImportCommand(CLI::App& kelb)
        : JobCommand(kelb, jobs::kForumImportJob,
                     "Add one article to wxAll per thread of bbsforum (channel 28, pages 1 to 3)") {
        declared().add_option("--source", source_, "Crawl database [Comb.mdb in [Setup] adultFolder]")->type_name("DB");
        declared().add_option("--dest", dest_, "Database with the table wxAll [[Paths] wxdb]")->type_name("DB");
        declareLanFolder("Folder that holds the page files; without it nothing can be imported");
        declareFooter("Stored page paths are put behind the LAN folder without their drive: D:\\forum\\a.htm is\n"
                      "forum/a.htm in it.\n"
                      "Threads that are in wxAll are passed over. An article of 12,000 characters or more goes to\n"
                      "TestRec/StoreN.txt in the application folder. A row whose page is the board's notice page\n"
                      "([Forum] boardName) is deleted, with its page file: see --trash and --dry-run.");
    }

private:
    void work(jobs::Context& context, jobs::JobHost& host, jobs::JobSummary& summary) override {
        jobs::importForumThreads({platform::fromUtf8(source_), platform::fromUtf8(dest_)}, context, host, summary);
    }

    std::string source_, dest_;
};

} // namespace

CommandPointer makeForumImport(CLI::App& kelb) {
    return std::make_unique<ForumImportCommand>(kelb);
}

} // namespace kelb::cli
