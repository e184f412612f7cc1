#include "cli/call_command.h"
#include "cli/commands.h"

#include <iostream>

namespace kelb::cli {
namespace {

class CallLineCommand final : public Command {
public:
    explicit CallLineCommand(CLI::App& kelb)
        : Command(
              kelb.add_subcommand("call", "Carry out text operations: one JSON request a line, one answer a line")) {
        declared().footer(
            "Example:\n"
            "  echo '{\"op\": \"ClsSmart.killURLText\", \"args\": [\"见HTTP://a.example/1 谢谢\"]}' | kelb "
            "call\n"
            "The operation \"list\" names all operations with their arguments.");
    }

    int run(Program& program) override { return runCall(std::cin, std::cout, program.platform()); }
};

} // namespace

CommandPointer makeCall(CLI::App& kelb) {
    return std::make_unique<CallLineCommand>(kelb);
}

} // namespace kelb::cli
