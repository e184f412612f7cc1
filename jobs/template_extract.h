#pragma once

#include "extract/FrmExtractor.h"
#include "jobs/context.h"
#include "jobs/job_host.h"
#include "jobs/job_summary.h"

#include <string>
#include <string_view>

namespace kelb::jobs {

inline constexpr char kTemplateExtractJob[] = "template-extract";

/// An empty text leaves the choice to the settings.
struct TemplateExtractOptions {
    std::u16string source = {};
    std::u16string dest = {};
    std::u16string destTable = u"wxAll";
    std::u16string model = {}; ///< path of the model page
    bool slow = false;         ///< a long article per tick of the timer
};

/// The template extractor without its windows: repeats the continuous mode, or runs the slow one, until every row of
/// the source was visited. Both labels of the window become log entries.
/// Throws JobError, ado::Error, platform::FileError; what was saved until then stays.
void extractByTemplate(const TemplateExtractOptions& options, Context& context, JobHost& host, JobSummary& summary);

/// The model page: what was named, else [Template] modelPage; a relative path lies in the application folder.
[[nodiscard]] std::u16string modelPagePath(std::u16string_view given, Context& context);

/// The extractor on the open record sets of the context's template workflow.
[[nodiscard]] extract::FrmExtractor::Parts extractorParts(Context& context);

} // namespace kelb::jobs
