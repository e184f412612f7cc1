#pragma once

#include "jobs/context.h"
#include "jobs/job_host.h"
#include "jobs/job_summary.h"

#include <string>

namespace kelb::jobs {

struct AddFieldsOptions {
    std::u16string database; ///< empty: the built-in path with [AddFields] siteLabel
    std::u16string table;    ///< empty: [AddFields] table
};

inline constexpr const char* kAddFieldsJob = "add-fields";

/// Adds the working columns blnPass, blnPosted, sT and sC to a table, in this order, then shows a box.
/// Throws SettingError, JobError, and ado::Error when a column is there already; the columns before it are added.
void addFields(const AddFieldsOptions& options, Context& context, JobHost& host, JobSummary& summary);

} // namespace kelb::jobs
