#include "jobs/dedupe_source.h"

#include "cli/commands.h"
#include "cli/job_command.h"
#include "platform/utf8.h"

namespace kelb::cli {
namespace {

class DedupeSourceCommand final : public JobCommand {
public:
    explicit DedupeSourceCommand(CLI::App& kelb)
        : JobCommand(kelb, jobs::kDedupeSourceJob,
                     "Delete duplicate and unusable pages of bbsforum, rows and page files") {
        declared()
            .add_option("--source", source_, "Crawl database, which is changed [Comb.mdb in [Setup] adultFolder]")
            ->type_name("DB");
        declareLanFolder("Folder that holds the page files; without it none is found");
        declareFooter("Of pages with one key (a forum's address up to its last \"-\", any other address whole) the\n"
                      "newest row stays, unless an older page has a clearly longer title or the newer one shows an\n"
                      "error. The sites are set in [Dedup] of Kelb.ini. Where more than 20 % of the rows\n"
                      "([Safety] maxDeletePercent) have no page file, nothing is done without --yes.\n"
                      "Try --dry-run first; with --trash DIR everything can be put back (kelb undo).");
    }

private:
    void work(jobs::Context& context, jobs::JobHost& host, jobs::JobSummary& summary) override {
        jobs::dedupeSource({platform::fromUtf8(source_)}, context, host, summary);
    }

    std::string source_;
};

} // namespace

CommandPointer makeDedupeSource(CLI::App& kelb) {
    return std::make_unique<DedupeSourceCommand>(kelb);
}

} // namespace kelb::cli
