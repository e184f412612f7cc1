#include "jobs/param_import.h"

#include "cli/commands.h"
#include "cli/job_command.h"
#include "cli/sink_arguments.h"
#include "platform/utf8.h"

namespace kelb::cli {
namespace {

class ParamImportCommand final : public JobCommand {
public:
    explicit ParamImportCommand(CLI::App& kelb)
        : JobCommand(kelb, jobs::kParamImportJob,
                     "Add model, code and ten parameters of product pages to the table wxKnowledge") {
        auto* folder = declared().add_option(
            "--folder", folder_, "Folder whose sub-folders 0, 1, 2 … hold the page files [[Params] shareFolder]");
        folder->type_name("DIR");
        auto* source =
            declared().add_option("--source", source_, "Crawl database whose rows name the page files, instead");
        source->type_name("DB")->excludes(folder);
        declared().add_option("--table", table_, "Its table [[Params] sourceTable]")->type_name("NAME")->needs(source);
        declareLanFolder("With --source: folder that holds the page files");
        declared().add_flag("--save", save_, "Store what is found; without it the job only shows it");
        sink_.emplace(declared());
        declareFooter(
            "A name that wxKnowledge holds already is not stored again. A walk over a folder goes on where\n"
            "the last one stood, kept in the folder's CounterResp.txt: see kelb counter. That place moves on\n"
            "without --save, too, but not with --dry-run. The walk takes the files of a sub-folder in the\n"
            "order of their names, 1000 at most, and ends at the first number that is missing.\n"
            "With --source: the rows whose url holds [Params] portalPath and /product/…/param.shtml.\n"
            "One run makes 70,000 passes at most.\n"
            "Example:\n"
            "  kelb param-import --folder /crawl/products --connection /crawl/knowledge.mdb --save");
    }

private:
    void work(jobs::Context& context, jobs::JobHost& host, jobs::JobSummary& summary) override {
        jobs::ParamImportOptions options;
        options.mode = source_.empty() ? jobs::LoopMode::Folder : jobs::LoopMode::Database;
        options.folder = platform::fromUtf8(folder_);
        options.source = platform::fromUtf8(source_);
        options.sourceTable = platform::fromUtf8(table_);
        options.sink = sink_->chosen();
        options.saves = [this] { return save_; };
        jobs::importParameters(options, context, host, summary);
    }

    std::string folder_, source_, table_;
    std::optional<SinkArguments> sink_; ///< declared where the help is to show it
    bool save_ = false;
};

} // namespace

CommandPointer makeParamImport(CLI::App& kelb) {
    return std::make_unique<ParamImportCommand>(kelb);
}

} // namespace kelb::cli
