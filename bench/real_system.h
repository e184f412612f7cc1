#pragma once

#include "platform/clock.h"
#include "platform/file_system.h"
#include "platform/platform.h"
#include "platform/random.h"

#include <cstddef>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>

/// What the programs that measure whole files share.
namespace kelb::bench {

/// The parts of the system under a program.
struct RealSystem {
    std::unique_ptr<platform::FileSystem> files = platform::makeSystemFileSystem({});
    platform::SystemClock clock;
    platform::SystemRandom random;
    platform::Platform platform{*files, clock, random, platform::executableFolder()};
};

/// Exit status of a program's work; an error is one line.
template <class Work>
int runOrExplain(const char* program, const Work& work) {
    try {
        return work();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", program, error.what());
        return 1;
    }
}

/// A text of so many characters, two thirds Chinese as in real articles; the same for one seed.
inline std::u16string articleText(std::size_t seed, std::size_t characters) {
    std::u16string text;
    text.reserve(characters);
    std::size_t state = seed * 2654435761U + 12345;
    while (text.size() < characters) {
        state = state * 6364136223846793005U + 1442695040888963407U;
        const auto pick = static_cast<unsigned>(state >> 40);
        text += pick % 3 == 0 ? static_cast<char16_t>(u'a' + pick / 3 % 26)
                              : static_cast<char16_t>(0x4E00 + pick / 3 % 0x4000);
    }
    return text;
}

} // namespace kelb::bench
