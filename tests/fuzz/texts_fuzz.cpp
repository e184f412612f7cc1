#include "cli/call_operations.h"

#include "platform/file_error.h"
#include "platform/page_text.h"
#include "platform/utf8.h"

#include "tests/fuzz/fuzz_machine.h"

#include <vector>

/// A page, or several texts parted by the byte 1F, given to every text operation there is: title and body of forum
/// pages, articles, questions and parameter sheets, strippers, markers, image tags, cleaning, judging, rewording.
namespace kelb::fuzz {
namespace {

using cli::ArgumentKind;
using cli::Json;

std::vector<std::string> pieces(std::string_view input) {
    std::vector<std::string> parts;
    for (std::size_t at = 0; at <= input.size();) {
        const std::size_t end = std::min(input.find('\x1F', at), input.size());
        parts.push_back(
            platform::toUtf8(platform::decodePage(input.substr(at, end - at), platform::PageEncoding::Auto)));
        at = end + 1;
    }
    return parts;
}

/// The texts in their order, the last one again and again.
Json valuesFor(const cli::CallOperation& operation, const std::vector<std::string>& texts) {
    Json values = Json::array();
    for (std::size_t i = 0; i < operation.arguments.size(); ++i) {
        const std::string& text = texts[std::min(i, texts.size() - 1)];
        switch (operation.arguments[i].kind) {
        case ArgumentKind::Text:
            values.push_back(text);
            break;
        case ArgumentKind::Flag:
            values.push_back(text.size() % 2 == 0);
            break;
        case ArgumentKind::Number:
            values.push_back(static_cast<int>(text.size()) - 2);
            break;
        case ArgumentKind::Texts:
            values.push_back(texts);
            break;
        }
    }
    return values;
}

} // namespace
} // namespace kelb::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kelb;
    const std::vector<std::string> texts = fuzz::pieces(fuzz::asText(data, size));
    fuzz::FuzzMachine machine;
    machine.files.writeFile(u"/app/ADMarks.txt", "www.\r\nQQ\r\n");
    machine.files.writeFile(u"/app/userNames.txt", "one\r\ntwo\r\n");
    cli::CallObjects objects(machine.platform);
    for (const cli::CallOperation& operation : cli::callOperations()) {
        if (operation.name == "list") // looks at no text
            continue;
        const cli::Json values = fuzz::valuesFor(operation, texts);
        try {
            operation.run(objects, cli::CallArguments(values, operation.arguments));
        } catch (const cli::CallError&) { // what an operation refuses
        } catch (const platform::FileError&) {
        } catch (const std::overflow_error&) { // a count of more than 16 bits
        }
    }
    return 0;
}
