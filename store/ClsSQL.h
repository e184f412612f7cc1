#pragma once

#include "ado/connection.h"
#include "ado/environment.h"
#include "platform/clock.h"

#include <cstdint>
#include <string_view>

namespace kelb::store {

/// A sink of crawled pages: the table "qiche" of a SQL Server database, which keeps the longest version of each page.
/// Its table (url, refurl, content, recdate, contentlength) is made outside this system.
class ClsSQL {
public:
    /// Opens the connection. A server that cannot be reached leaves the sink not ready, and errorText() says why.
    ClsSQL(ado::Environment& environment, platform::Clock& clock, std::u16string_view connectionString);

    bool blnReady() const noexcept { return ready_; }
    /// Kept: the table belongs to the server's side, and nothing is made here.
    void createTable4Me() const {}
    /// Stores the page, or replaces the stored version when the new one is at least 300 characters longer.
    /// `contentLength` is the caller's count. Result: 0 not ready, 1 stored, 2 the stored version was kept.
    /// Throws ado::Error; the table is then as it was.
    std::int16_t Save2DBStomach(std::u16string_view url, std::u16string_view refurl, std::u16string_view content,
                                std::int32_t contentLength);

    const std::u16string& errorText() const noexcept { return errorText_; }

private:
    platform::Clock& clock_;
    ado::Connection connection_;
    bool ready_ = false;
    std::u16string errorText_;
};

} // namespace kelb::store
