#include "cli/call_loop.h"

#include "tests/fuzz/fuzz_machine.h"

#include <nlohmann/json.hpp>

#include <sstream>

/// Any bytes as the requests of another program: each line gets one answer, which is JSON.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using kelb::fuzz::require;
    kelb::fuzz::FuzzMachine machine;
    machine.files.writeFile(u"/app/ADMarks.txt", "www.\r\n");
    const std::string requests(kelb::fuzz::asText(data, size));
    std::istringstream in(requests), asked(requests);
    std::ostringstream out;
    require(kelb::cli::runCall(in, out, machine.platform, kelb::cli::Flush::AtEnd) == 0, "requests do not end the run");
    std::istringstream answers(out.str());
    std::string request, answer;
    while (std::getline(asked, request)) {
        require(static_cast<bool>(std::getline(answers, answer)), "each request has an answer");
        const auto read = nlohmann::json::parse(answer, nullptr, false);
        require(read.is_object() && read.contains("id"), "an answer is a JSON object with its id");
    }
    require(!std::getline(answers, answer), "nothing is answered that was not asked");
    return 0;
}
