#include "jobs/export_users.h"

#include "cli/commands.h"
#include "cli/job_command.h"
#include "platform/utf8.h"

namespace kelb::cli {
namespace {

class ExportUsersCommand final : public JobCommand {
public:
    explicit ExportUsersCommand(CLI::App& kelb)
        : JobCommand(kelb, jobs::kExportUsersJob,
                     "Write Chinese user names of the table DVUser to TestRec/StoreN.txt") {
        declared().add_option("--db", database_, "Database, which is only read [[Paths] dvUserDb]")->type_name("DB");
        declareFooter("The first 300 rows are read. Without its first line the file can serve as userNames.txt.");
    }

private:
    void work(jobs::Context& context, jobs::JobHost& host, jobs::JobSummary& summary) override {
        jobs::exportUsers({platform::fromUtf8(database_)}, context, host, summary);
    }

    std::string database_;
};

} // namespace

CommandPointer makeExportUsers(CLI::App& kelb) {
    return std::make_unique<ExportUsersCommand>(kelb);
}

} // namespace kelb::cli
