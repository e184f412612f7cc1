#include "jobs/undo.h"

#include "cli/commands.h"
#include "cli/job_command.h"
#include "platform/utf8.h"

namespace kelb::cli {
namespace {

class UndoCommand final : public JobCommand {
public:
    explicit UndoCommand(CLI::App& kelb)
        : JobCommand(kelb, jobs::kUndoJob, "Put back what jobs have moved to the trash") {
        declared().add_option("--run", run_, "Only this run: the name of its folder in the trash")->type_name("NAME");
        declareFooter("--trash DIR names the trash, or the folder of one run [[Safety] trash].\n"
                      "The newest run is undone first: files go to their old places, rows into their tables with\n"
                      "the autonumbers that they had. Nothing is overwritten; what cannot be put back is told and\n"
                      "stays in the trash (exit status 1). It may be repeated.\n"
                      "Example:\n"
                      "  kelb undo --trash /crawl/trash --dry-run");
    }

private:
    void work(jobs::Context& context, jobs::JobHost& host, jobs::JobSummary& summary) override {
        jobs::undoTrash({.trash = {}, .run = platform::fromUtf8(run_)}, context, host, summary);
    }

    std::string run_;
};

} // namespace

CommandPointer makeUndo(CLI::App& kelb) {
    return std::make_unique<UndoCommand>(kelb);
}

} // namespace kelb::cli
