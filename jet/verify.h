#pragma once

#include "jet/database.h"

#include <string>
#include <vector>

namespace kelb::jet {

struct Fault {
    enum class Severity { Error, Warning };
    Severity severity;
    PageNumber page;
    int slot; ///< −1: the page as a whole
    std::string text;
};

/// Checks every rule of the format over the whole file: pages have one owner, maps agree with the global map, rows and
/// long values are whole, index entries lead to their rows and are in order, keys agree with the rows. Never throws for
/// damage: each is a Fault. Linear in the file's size.
std::vector<Fault> verify(Database& database);

} // namespace kelb::jet
