#pragma once

#include "platform/platform.h"

#include <iosfwd>

namespace kelb::cli {

enum class Flush {
    EachLine, ///< whoever asked waits for the answer before asking on
    AtEnd     ///< nobody waits: when the stream's buffer is full, and at the end
};

/// `kelb call`: carries out one JSON request a line and writes one JSON answer a line, in the same order, until `in`
/// ends. A bad line or a failing operation is answered with "error" and does not end it; what the operations keep
/// between calls lasts until then. Every answer has "id" (null where the request had none).
/// Returns the exit status: 0, or 1 when `out` cannot be written.
int runCall(std::istream& in, std::ostream& out, const platform::Platform& platform, Flush flush = Flush::EachLine);

} // namespace kelb::cli
