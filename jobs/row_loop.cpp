#include "jobs/row_loop.h"

#include "platform/text.h"

#include <algorithm>

namespace kelb::jobs {

void walkRows(const RowWalk& walk, JobHost& host, JobSummary& summary, const std::function<void(std::size_t)>& step) {
    const auto number = [](std::size_t count) { return platform::number(static_cast<long long>(count)); };
    const std::size_t count = walk.rows.RecordCount();
    if (walk.countLine == RowWalk::CountLine::TotalRec) {
        host.log(u"totalRec: " + number(count));
    }
    const std::size_t last = std::min(count, walk.limit);
    for (std::size_t i = 1; i <= last; ++i) {
        host.yield();
        if (walk.stop == RowWalk::Stop::Watched && host.stopRequested()) {
            summary.stopped = true;
            return;
        }
        if (walk.rows.Eof() || walk.rows.Bof()) {
            return; // rows at the end were deleted by somebody else meanwhile
        }
        if (walk.label == RowWalk::Label::Usual) {
            host.showProgress(u"已处理: " + number(i) + u",还剩于: " + number(count - i), i, count);
        }
        host.yield();
        ++summary.rows;
        step(i);
        walk.rows.MoveNext();
        for (ado::Connection* connection : walk.connections) {
            connection->flushIfDue();
        }
    }
}

} // namespace kelb::jobs
