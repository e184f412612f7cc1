#include "app/job_buttons.h"

#include "app/job_contexts.h"
#include "jobs/add_fields.h"
#include "jobs/article_import.h"
#include "jobs/dedupe_dest.h"
#include "jobs/dedupe_source.h"
#include "jobs/export_users.h"
#include "jobs/fault_merge.h"
#include "jobs/forum_fill.h"
#include "jobs/forum_import.h"
#include "jobs/multipage_import.h"
#include "jobs/param_import.h"
#include "platform/path_map.h"

namespace kelb::app {
namespace {

constexpr char kStop[] = "ChkStopFor";
constexpr char kStopParameters[] = "Check2";
constexpr char kNoStop[] = ""; ///< jobs that never ask whether to stop. Kept

/// The databases that the set-up dialog has opened go before the window's fields.
jobs::ArticleImportOptions articleOptions(JobContexts& contexts, const JobRequest& request) {
    jobs::ArticleImportOptions options;
    options.source = request.source;
    options.dest = request.destination;
    if (const auto& chosen = contexts.program().templateWorkflow().chosen()) {
        options.source = chosen->source;
        options.dest = chosen->destination;
        options.destTable = chosen->destinationTable;
    }
    return options;
}

/// The page files lie in the folder of the source database.
jobs::ParamImportOptions parameterOptions(const JobRequest& request) {
    jobs::ParamImportOptions options;
    options.mode = request.options.productRows ? jobs::LoopMode::Database : jobs::LoopMode::Folder;
    options.folder = platform::parentFolder(request.source);
    options.source = request.source;
    options.saves = request.savesParameters;
    return options;
}

} // namespace

std::vector<JobButton> jobButtons(JobContexts& contexts) {
    return {
        {"Command1", kStop, jobs::kForumImportJob,
         [&contexts](const JobRequest& request, jobs::JobHost& host, jobs::JobSummary& summary) {
             contexts.run(request.options, [&](jobs::Context& context) {
                 jobs::importForumThreads({.source = request.source, .dest = request.destination}, context, host,
                                          summary);
             });
         }},
        {"Command15", kStop, jobs::kForumFillJob,
         [&contexts](const JobRequest& request, jobs::JobHost& host, jobs::JobSummary& summary) {
             contexts.run(request.options, [&](jobs::Context& context) {
                 jobs::fillForumThreads({.source = request.source}, context, host, summary);
             });
         }},
        {"Command12", kStop, jobs::kArticleImportJob,
         [&contexts](const JobRequest& request, jobs::JobHost& host, jobs::JobSummary& summary) {
             contexts.run(request.options, [&](jobs::Context& context) {
                 jobs::importArticles(articleOptions(contexts, request), context, host, summary);
             });
         }},
        {"Command13", kNoStop, jobs::kMultipageImportJob,
         [&contexts](const JobRequest& request, jobs::JobHost& host, jobs::JobSummary& summary) {
             contexts.run(request.options, [&](jobs::Context& context) {
                 jobs::importMultipageArticles({.source = request.source, .sourceTable = {}, .sink = {}}, context, host,
                                               summary);
             });
         }},
        {"Command11", kStop, jobs::kDedupeSourceJob,
         [&contexts](const JobRequest& request, jobs::JobHost& host, jobs::JobSummary& summary) {
             contexts.run(request.options, [&](jobs::Context& context) {
                 jobs::dedupeSource({.source = request.source}, context, host, summary);
             });
         }},
        {"Command16", kNoStop, jobs::kDedupeDestJob,
         [&contexts](const JobRequest& request, jobs::JobHost& host, jobs::JobSummary& summary) {
             contexts.run(request.options, [&](jobs::Context& context) {
                 jobs::dedupeDest({.dest = request.destination, .table = {}}, context, host, summary);
             });
         }},
        {"Command10", kNoStop, jobs::kFaultMergeJob,
         [&contexts](const JobRequest& request, jobs::JobHost& host, jobs::JobSummary& summary) {
             contexts.run(request.options, [&](jobs::Context& context) {
                 jobs::mergeFaults({.database = request.source, .table = {}}, context, host, summary);
             });
         }},
        {"Command5", kStopParameters, jobs::kParamImportJob,
         [&contexts](const JobRequest& request, jobs::JobHost& host, jobs::JobSummary& summary) {
             contexts.run(request.options, [&](jobs::Context& context) {
                 jobs::importParameters(parameterOptions(request), context, host, summary);
             });
         }},
        {"Command3", kNoStop, jobs::kExportUsersJob,
         [&contexts](const JobRequest& request, jobs::JobHost& host, jobs::JobSummary& summary) {
             contexts.run(request.options, [&](jobs::Context& context) {
                 jobs::exportUsers({.database = request.source}, context, host, summary);
             });
         }},
        {"Command4", kNoStop, jobs::kAddFieldsJob,
         [&contexts](const JobRequest& request, jobs::JobHost& host, jobs::JobSummary& summary) {
             contexts.run(request.options, [&](jobs::Context& context) {
                 jobs::addFields({.database = request.source, .table = {}}, context, host, summary);
             });
         }},
    };
}

} // namespace kelb::app
