#pragma once

#include "jobs/context.h"
#include "jobs/job_host.h"
#include "jobs/job_summary.h"
#include "jobs/sink_connection.h"

#include <cstddef>
#include <functional>
#include <string>

namespace kelb::jobs {

/// Where the product pages come from.
enum class LoopMode {
    Folder,   ///< "文件夹遍历": the page files of a folder
    Database, ///< "数据库循环": the files that the rows of a crawl table name
};

struct ParamImportOptions {
    LoopMode mode = LoopMode::Folder;
    std::u16string folder;      ///< page files and their Comb.mdb; empty: [Params] shareFolder
    std::u16string source;      ///< empty: Comb.mdb in the folder
    std::u16string sourceTable; ///< empty: [Params] sourceTable; joined into the SELECT as it stands
    SinkOptions sink;
    std::function<bool()> saves = [] { return false; }; ///< `Check3`, asked for each page
    std::size_t mostPasses = 70000;
};

inline constexpr const char* kParamImportJob = "param-import";

/// Takes model name, model code and ten parameters out of each product page, and adds those whose name is not in the
/// table wxKnowledge yet. A walk over a folder goes on where the last one stood (store::ClsIO); its place is kept at
/// least once a second and at the end, behind the rows that it has led to, so that a kill makes pages be read again
/// but never be passed over. Throws SettingError, JobError, ado::Error, platform::FileError and store::CounterError;
/// rows that were added stay.
void importParameters(const ParamImportOptions& options, Context& context, JobHost& host, JobSummary& summary);

} // namespace kelb::jobs
