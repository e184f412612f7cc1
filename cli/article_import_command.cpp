#include "jobs/article_import.h"

#include "cli/commands.h"
#include "cli/job_command.h"
#include "platform/utf8.h"

namespace kelb::cli {
namespace {

class ArticleImportCommand final : public JobCommand {
public:
    explicit ArticleImportCommand(CLI::App& kelb)
        : JobCommand(kelb, jobs::kArticleImportJob,
                     "Add one article to wxAll per page of article sites (one page each)") {
        declared().add_option("--source", source_, "Crawl database [Comb.mdb in [Setup] adultFolder]")->type_name("DB");
        declared().add_option("--source-table", sourceTable_, "Its table [bbsforum]")->type_name("NAME");
        declared().add_option("--dest", dest_, "Database of the articles [[Paths] wxdb]")->type_name("DB");
        declared().add_option("--dest-table", destTable_, "Its table [wxAll]")->type_name("NAME");
        declareFooter("The field content of a row holds the page itself or the path of its file. [Articles] site1 to\n"
                      "site5 name parts of the sites' addresses, in the order of the five known page forms; pages\n"
                      "of none of them are stored with the title and body of the row before them.\n"
                      "Each article is printed as it is found. One of 8,000 characters or more goes to\n"
                      "TestRec/StoreN.txt in the application folder. A page without its markers is logged and left\n"
                      "out.");
    }

private:
    void work(jobs::Context& context, jobs::JobHost& host, jobs::JobSummary& summary) override {
        jobs::ArticleImportOptions options;
        options.source = platform::fromUtf8(source_);
        options.dest = platform::fromUtf8(dest_);
        if (!sourceTable_.empty()) {
            options.sourceTable = platform::fromUtf8(sourceTable_);
        }
        if (!destTable_.empty()) {
            options.destTable = platform::fromUtf8(destTable_);
        }
        jobs::importArticles(options, context, host, summary);
    }

    std::string source_, sourceTable_, dest_, destTable_;
};

} // namespace

CommandPointer makeArticleImport(CLI::App& kelb) {
    return std::make_unique<ArticleImportCommand>(kelb);
}

} // namespace kelb::cli
