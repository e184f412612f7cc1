#include "cli/commands.h"
#include "cli/db_command.h"
#include "jet/verify.h"
#include "platform/utf8.h"

#include <algorithm>
#include <iostream>

namespace kelb::cli {
namespace {

class DbCheckCommand final : public DatabaseCommand {
public:
    explicit DbCheckCommand(CLI::App& db)
        : DatabaseCommand(db, "check", "Verify the whole file: pages, usage maps, rows, long values, indexes") {
        declared().footer("Prints one line a fault; exit status 1 when there is an error. A warning is something that\n"
                          "other programs are known to leave behind and that harms nothing.");
    }

    int run(Program& program) override {
        const auto database = program.context().databases().openDatabase(path(), jet::Pager::Access::Read);
        const std::vector<jet::Fault> faults = jet::verify(*database);
        for (const jet::Fault& fault : faults) {
            std::cout << (isError(fault) ? "error: page " : "warning: page ") << jet::raw(fault.page);
            if (fault.slot >= 0) {
                std::cout << " slot " << fault.slot;
            }
            std::cout << ": " << fault.text << '\n';
        }
        const auto errors = std::count_if(faults.begin(), faults.end(), isError);
        std::cout << platform::toUtf8(path()) << ": " << errors << " errors, "
                  << static_cast<std::ptrdiff_t>(faults.size()) - errors << " warnings\n";
        return errors == 0 ? kDone : kFailed;
    }

private:
    static bool isError(const jet::Fault& fault) { return fault.severity == jet::Fault::Severity::Error; }
};

} // namespace

CommandPointer makeDbCheck(CLI::App& db) {
    return std::make_unique<DbCheckCommand>(db);
}

} // namespace kelb::cli
