#pragma once

#include "ado/error.h"

#include <exception>
#include <string_view>

namespace kelb::ado {

/// What a message says beside the reason.
struct Doing {
    std::string_view action;       ///< as in "cannot …": "open the record set"
    std::u16string_view table;     ///< "" when the statement tells
    std::u16string_view database;  ///< its path
    std::u16string_view statement; ///< "" when there is none; shown cut to a length that fits a line
};

/// Called while an exception is handled: throws Error for those of the engine, the file system and the statement, each
/// with what was being done, the database and the statement; any other exception unchanged.
[[noreturn]] void rethrowAsError(const Doing& doing);

/// Runs `work` at the boundary to the callers of this layer.
template <class Work>
decltype(auto) during(const Doing& doing, Work&& work) {
    try {
        return work();
    } catch (const std::exception&) {
        rethrowAsError(doing);
    }
}

} // namespace kelb::ado
