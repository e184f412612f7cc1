#include "jobs/multipage_import.h"

#include "cli/commands.h"
#include "cli/job_command.h"
#include "cli/sink_arguments.h"
#include "platform/utf8.h"

namespace kelb::cli {
namespace {

class MultipageImportCommand final : public JobCommand {
public:
    explicit MultipageImportCommand(CLI::App& kelb)
        : JobCommand(kelb, jobs::kMultipageImportJob,
                     "Merge articles of several pages and add them to the table wxPrinter") {
        declared().add_option("--source", source_, "Crawl database [[Paths] multiDb]")->type_name("DB");
        declared().add_option("--source-table", sourceTable_, "Its table [[Articles] multiTable]")->type_name("NAME");
        sink_.emplace(declared());
        declareFooter("[Articles] siteAPrefix is the address before the articles' own names; page 2 of NAME.htm is\n"
                      "NAMEp2.htm. Each run takes the first 10 articles of the table and clears blnPass, sT and sC\n"
                      "of their rows; a table that lacks these fields or pagenum gets them, and the run ends.\n"
                      "Every merged text is written to TestRec/StoreN.txt in the application folder, too, to look\n"
                      "at; an article of 8,000 characters or more goes there only. Ctrl-C does not stop this job\n"
                      "between articles.\n"
                      "Without --server and --connection: [SqlServer] wxDBConnection, else server.");
    }

private:
    void work(jobs::Context& context, jobs::JobHost& host, jobs::JobSummary& summary) override {
        jobs::importMultipageArticles({.source = platform::fromUtf8(source_),
                                       .sourceTable = platform::fromUtf8(sourceTable_),
                                       .sink = sink_->chosen()},
                                      context, host, summary);
    }

    std::string source_, sourceTable_;
    std::optional<SinkArguments> sink_; ///< declared where the help is to show it
};

} // namespace

CommandPointer makeMultipageImport(CLI::App& kelb) {
    return std::make_unique<MultipageImportCommand>(kelb);
}

} // namespace kelb::cli
