#pragma once

#include <string>

namespace kelb::platform {

class Clock;
class FileSystem;
class Random;

/// The outside world as one program run sees it. Made by each program's main and by each test; outlives everything
/// that it is handed to.
struct Platform {
    FileSystem& files;
    Clock& clock;
    Random& random;
    std::u16string applicationFolder; ///< --home, else KELB_HOME, else the executable's folder; no separator at the end
};

} // namespace kelb::platform
