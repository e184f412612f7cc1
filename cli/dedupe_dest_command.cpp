#include "jobs/dedupe_dest.h"

#include "cli/commands.h"
#include "cli/job_command.h"
#include "platform/utf8.h"

namespace kelb::cli {
namespace {

class DedupeDestCommand final : public JobCommand {
public:
    explicit DedupeDestCommand(CLI::App& kelb)
        : JobCommand(kelb, jobs::kDedupeDestJob,
                     "Keep one row for all addresses that are equal up to their last \"-\"") {
        declared().add_option("--dest", dest_, "Database, which is changed [[Paths] wxdb]")->type_name("DB");
        declared().add_option("--table", table_, "The table [wxGG]")->type_name("NAME");
        declareFooter("The row stored last (recTime) stays. Addresses without \"-\" count as equal: all but one of\n"
                      "these rows are deleted.\n"
                      "Try --dry-run first; with --trash DIR everything can be put back (kelb undo).");
    }

private:
    void work(jobs::Context& context, jobs::JobHost& host, jobs::JobSummary& summary) override {
        jobs::dedupeDest({platform::fromUtf8(dest_), platform::fromUtf8(table_)}, context, host, summary);
    }

    std::string dest_, table_;
};

} // namespace

CommandPointer makeDedupeDest(CLI::App& kelb) {
    return std::make_unique<DedupeDestCommand>(kelb);
}

} // namespace kelb::cli
