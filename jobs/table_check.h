#pragma once

#include "ado/connection.h"

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::jobs {

/// What a job needs of its databases, looked up before it stores anything, so that it ends with one error naming all
/// that is missing rather than half-way with the first.
class TableCheck {
public:
    /// Looks the table and its columns up. `path` is for the message. Throws ado::Error when the database cannot be
    /// read.
    void need(ado::Connection& connection, std::u16string_view path, std::u16string_view table,
              std::initializer_list<std::u16string_view> columns);
    /// Throws JobError when anything was missing.
    void finish() const;

private:
    std::vector<std::string> missing_;
};

} // namespace kelb::jobs
