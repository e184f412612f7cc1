#include "cli/commands.h"
#include "cli/db_command.h"
#include "cli/db_copy_host.h"
#include "jet/database_copy.h"
#include "platform/utf8.h"

#include <iostream>

namespace kelb::cli {
namespace {

class DbCompactCommand final : public DatabaseCommand {
public:
    explicit DbCompactCommand(CLI::App& db)
        : DatabaseCommand(db, "compact", "Write the tables into a new database without free pages", "IN") {
        declared().add_option("OUT", target_, "The new database; nothing may be there yet")->required()->type_name("");
        declared().footer(
            "All tables with their fields, properties, rows and indexes; the indexes are built anew. IN may be of any\n"
            "version from Access 97 on, OUT is an Access 2000 database. What has no place there (queries, forms,\n"
            "relationships, linked tables, attachments, rights of single users) is told on standard error by name.\n"
            "OUT is verified before it gets its name; a kill leaves at most OUT.part, which the next run throws away.\n"
            "A damaged IN is refused: see \"kelb db recover\".");
    }

    int run(Program& program) override {
        const std::u16string target = platform::fromUtf8(target_);
        const auto source = program.context().databases().openDatabase(path(), jet::Pager::Access::Read);
        CopyHost host(program, std::cerr, nullptr);
        return copyUnlessStopped(host, [&]() -> int {
            const jet::CopyCounts counts = jet::compactDatabase(program.platform(), *source, target, host);
            host.finish();
            std::cout << copySummary(target, counts) << "; " << bytesOf(program, path()) << " bytes became "
                      << bytesOf(program, target) << '\n';
            return kDone;
        });
    }

private:
    static std::uint64_t bytesOf(Program& program, const std::u16string& file) {
        return program.platform().files.open(file, platform::OpenMode::Read)->size();
    }

    std::string target_;
};

} // namespace

CommandPointer makeDbCompact(CLI::App& db) {
    return std::make_unique<DbCompactCommand>(db);
}

} // namespace kelb::cli
