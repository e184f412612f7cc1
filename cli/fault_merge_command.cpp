#include "jobs/fault_merge.h"

#include "cli/commands.h"
#include "cli/job_command.h"
#include "platform/utf8.h"

namespace kelb::cli {
namespace {

class FaultMergeCommand final : public JobCommand {
public:
    explicit FaultMergeCommand(CLI::App& kelb)
        : JobCommand(kelb, jobs::kFaultMergeJob,
                     "Merge approved repair records about one set code into fault summaries") {
        declared()
            .add_option("--db", database_, "Database, which is changed [D:\\KelbFolder\\Comb(LABEL1).mdb]")
            ->type_name("DB");
        declared().add_option("--table", table_, "The table [[Merge] table]")->type_name("NAME");
        declareFooter("Takes the rows of the site [Merge] siteFragment with blnPass set and a TVCode. The first of\n"
                      "two rows gets both texts and a title of its own, the second one loses blnPass. LABEL is\n"
                      "[Merge] siteLabel. The column blnJoined is added where it is missing.\n"
                      "Try --dry-run first.");
    }

private:
    void work(jobs::Context& context, jobs::JobHost& host, jobs::JobSummary& summary) override {
        jobs::FaultMergeOptions options{.database = platform::fromUtf8(database_), .table = {}};
        if (table_) {
            options.table = platform::fromUtf8(*table_);
        }
        jobs::mergeFaults(options, context, host, summary);
    }

    std::string database_;
    std::optional<std::string> table_;
};

} // namespace

CommandPointer makeFaultMerge(CLI::App& kelb) {
    return std::make_unique<FaultMergeCommand>(kelb);
}

} // namespace kelb::cli
