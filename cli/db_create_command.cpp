#include "cli/commands.h"
#include "cli/db_command.h"
#include "jet/database.h"

namespace kelb::cli {
namespace {

class DbCreateCommand final : public DatabaseCommand {
public:
    explicit DbCreateCommand(CLI::App& db)
        : DatabaseCommand(db, "create", "Make an empty Access 2000 database where no file is yet") {}

    int run(Program& program) override {
        jet::Database::create(program.platform(), path())->commit();
        return kDone;
    }
};

} // namespace

CommandPointer makeDbCreate(CLI::App& db) {
    return std::make_unique<DbCreateCommand>(db);
}

} // namespace kelb::cli
