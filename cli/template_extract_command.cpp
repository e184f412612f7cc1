#include "jobs/template_extract.h"

#include "cli/commands.h"
#include "cli/job_command.h"
#include "platform/utf8.h"

namespace kelb::cli {
namespace {

class TemplateExtractCommand final : public JobCommand {
public:
    explicit TemplateExtractCommand(CLI::App& kelb)
        : JobCommand(kelb, jobs::kTemplateExtractJob,
                     "Learn a site's boilerplate lines and save what is left of its pages") {
        declared()
            .add_option("--source", source_, "Crawl database with the table bbsforum [Comb.mdb in [Setup] adultFolder]")
            ->type_name("DB");
        declared()
            .add_option("--dest", dest_, "Database of the articles [Comb2.mdb in [Setup] adultFolder]")
            ->type_name("DB");
        declared()
            .add_option("--dest-table", destTable_, "Its table; made when it is missing [wxAll]")
            ->type_name("NAME");
        declared().add_option("--model", model_, "Model page of the site [[Template] modelPage]")->type_name("FILE");
        declared().add_flag("--slow", slow_, "An article per [Template] timerMs");
        declareFooter(
            "The column content names the page files. The first 106 pages with 100 characters and more are only\n"
            "learned from; then the rows are read again from the second one and saved. A line of at most 100\n"
            "characters that was seen three times is left out; a page of 8,000 characters and more is not saved.");
    }

private:
    void work(jobs::Context& context, jobs::JobHost& host, jobs::JobSummary& summary) override {
        jobs::extractByTemplate({.source = platform::fromUtf8(source_),
                                 .dest = platform::fromUtf8(dest_),
                                 .destTable = platform::fromUtf8(destTable_),
                                 .model = platform::fromUtf8(model_),
                                 .slow = slow_},
                                context, host, summary);
    }

    std::string source_, dest_, model_;
    std::string destTable_ = "wxAll";
    bool slow_ = false;
};

} // namespace

CommandPointer makeTemplateExtract(CLI::App& kelb) {
    return std::make_unique<TemplateExtractCommand>(kelb);
}

} // namespace kelb::cli
