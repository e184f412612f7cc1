#pragma once

#include "jobs/context.h"
#include "jobs/job_host.h"
#include "jobs/job_summary.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace kelb::ado {
class Recordset;
}

namespace kelb::jobs {

/// The pages that the parameter import goes through, one at a time.
class ProductPages {
public:
    enum class State {
        Page,   ///< text() is one; "" when it could not be read
        NoMore, ///< text() tells that a sub-folder has no more files
        WalkEnds
    };

    virtual ~ProductPages() = default;
    virtual State next() = 0;
    const std::u16string& text() const noexcept { return text_; }
    /// What names the page in messages: a path or an address.
    virtual std::u16string name() const = 0;
    /// What names it in the summary: the address of a row, or the path of a file.
    virtual std::u16string row() const { return name(); }
    /// The address to be stored.
    virtual std::u16string url() const = 0;
    /// Pages of the whole walk where that is known, else 0.
    virtual std::size_t total() const { return 0; }
    /// What was made of the pages so far is safe.
    virtual void keepPlace() {}
    /// The walk is over, or was ended: tells what it has not reached.
    virtual void finish(JobSummary& summary) { static_cast<void>(summary); }

protected:
    std::u16string text_;
};

/// The page files of a folder, from where the last walk stood. `folder` and `host` outlive this.
[[nodiscard]] std::unique_ptr<ProductPages> pagesOfFolder(std::u16string_view folder, Context& context, JobHost& host);
/// The page files that the rows name. `rows` is open, at its first row, and outlives this.
[[nodiscard]] std::unique_ptr<ProductPages> pagesOfRows(ado::Recordset& rows, Context& context, JobHost& host);

} // namespace kelb::jobs
