#include "tests/fuzz/fuzz_machine.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

/// Gives a fuzz target every file of the folders named, for builds without a fuzzer. Fails when there is none.
int main(int argc, char** argv) {
    std::size_t replayed = 0;
    for (int i = 1; i < argc; ++i)
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string bytes((std::istreambuf_iterator<char>(file)), {});
            std::cerr << entry.path().filename() << std::endl; // the last one named is the one that failed
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
            ++replayed;
        }
    std::cout << replayed << " inputs\n";
    return replayed > 0 ? 0 : 1;
}
