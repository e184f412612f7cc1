#include "jobs/add_fields.h"

#include "cli/commands.h"
#include "cli/job_command.h"
#include "platform/utf8.h"

namespace kelb::cli {
namespace {

class AddFieldsCommand final : public JobCommand {
public:
    explicit AddFieldsCommand(CLI::App& kelb)
        : JobCommand(kelb, jobs::kAddFieldsJob, "Add the columns blnPass, blnPosted, sT and sC to a crawl table") {
        declared()
            .add_option("--db", database_, "Database, which is changed [D:\\KelbFolder\\Comb(LABEL2).mdb]")
            ->type_name("DB");
        declared().add_option("--table", table_, "The table [[AddFields] table]")->type_name("NAME");
        declareFooter("LABEL is [AddFields] siteLabel. A table that has one of the columns is an error.");
    }

private:
    void work(jobs::Context& context, jobs::JobHost& host, jobs::JobSummary& summary) override {
        jobs::addFields({platform::fromUtf8(database_), platform::fromUtf8(table_)}, context, host, summary);
    }

    std::string database_, table_;
};

} // namespace

CommandPointer makeAddFields(CLI::App& kelb) {
    return std::make_unique<AddFieldsCommand>(kelb);
}

} // namespace kelb::cli
