#include "cli/command_line.h"
#include "platform/program_start.h"

int main(int count, char** arguments) {
    const kelb::platform::StandardStreams streams;
    const std::vector<std::string> words = kelb::platform::programArguments(count, arguments);
    std::vector<const char*> list;
    list.reserve(words.size());
    for (const std::string& word : words) {
        list.push_back(word.c_str());
    }
    return kelb::cli::runKelb(static_cast<int>(list.size()), list.data());
}
