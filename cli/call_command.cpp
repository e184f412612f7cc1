#include "cli/call_loop.h"
#include "cli/commands.h"
#include "cli/file_streams.h"
#include "platform/terminal.h"
#include "platform/utf8.h"

#include <iostream>
#include <optional>

namespace kelb::cli {
namespace {

class CallCommand final : public Command {
public:
    explicit CallCommand(CLI::App& kelb)
        : Command(
              kelb.add_subcommand("call", "Carry out text operations: one JSON request a line, one answer a line")) {
        declared().add_option("--file", file_, "Requests [standard input]")->type_name("IN");
        declared()
            .add_option("--out", out_, "Answers; appears under its name when all are there [standard output]")
            ->type_name("OUT");
        declared().footer(
            "Example:\n"
            "  echo '{\"op\": \"ClsSmart.killURLText\", \"args\": [\"见HTTP://a.example/1 谢谢\"]}' | "
            "kelb call\n"
            "The operation \"list\" names all operations with their arguments. An answer follows its request "
            "at once,\nunless standard output is a file.");
    }

    int run(Program& program) override {
        platform::FileSystem& files = program.platform().files;
        std::optional<FileReader> requests;
        if (!file_.empty()) {
            requests.emplace(files, platform::fromUtf8(file_));
        }
        std::istream& in = requests ? *requests : std::cin;
        if (out_.empty()) {
            const bool toFile = platform::isRegularFile(platform::StandardStream::Output);
            return runCall(in, std::cout, program.platform(), toFile ? Flush::AtEnd : Flush::EachLine);
        }
        FileWriter answers(files, platform::fromUtf8(out_));
        const int status = runCall(in, answers, program.platform(), Flush::AtEnd);
        answers.finish();
        return status;
    }

private:
    std::string file_, out_;
};

} // namespace

CommandPointer makeCall(CLI::App& kelb) {
    return std::make_unique<CallCommand>(kelb);
}

} // namespace kelb::cli
