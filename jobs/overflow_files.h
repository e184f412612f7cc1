#pragma once

#include "jobs/job_host.h"
#include "jobs/job_summary.h"
#include "platform/platform.h"
#include "platform/ui_pump.h"
#include "store/ClsStoreKeeper.h"

#include <string_view>

namespace kelb::jobs {

/// Where an overflow file comes from, for the list of them.
struct OverflowOrigin {
    std::u16string_view url;
    std::u16string_view title;
};

/// Tells at the start of a long run that its folder "TestRec" is missing, without which the first over-long text ends
/// it.
void warnWithoutOverflowFolder(platform::Platform& platform, JobHost& host);

/// Hands over-long texts to store2Disk and lists each file in "TestRec\index.csv": name, job, url, title, length of the
/// text (UTF-16 code units), time. The list is UTF-8 with a byte order mark, since titles need more than one code page
/// and spreadsheet programs ask for the mark.
class OverflowFiles {
public:
    OverflowFiles(store::ClsStoreKeeper& store, platform::Platform& platform, JobSummary& summary)
        : store_(store), platform_(platform), summary_(summary) {}

    /// Throws platform::FileError and what store2Disk throws.
    void write(std::u16string_view text, std::u16string_view caption, const OverflowOrigin& origin,
               platform::UiPump& events);

private:
    store::ClsStoreKeeper& store_;
    platform::Platform& platform_;
    JobSummary& summary_;
};

} // namespace kelb::jobs
