#include "cli/commands.h"
#include "cli/db_command.h"
#include "cli/db_copy_host.h"
#include "cli/file_streams.h"
#include "jet/recovery.h"
#include "platform/utf8.h"

#include <iostream>
#include <optional>

namespace kelb::cli {
namespace {

class DbRecoverCommand final : public DatabaseCommand {
public:
    explicit DbRecoverCommand(CLI::App& db)
        : DatabaseCommand(db, "recover", "Save what can be read of a damaged database into a new one", "IN") {
        declared().add_option("OUT", target_, "The new database; nothing may be there yet")->required()->type_name("");
        declared()
            .add_option("--report", report_, "Write what is lost into this file as JSON lines, not to standard error")
            ->type_name("FILE");
        declared().footer(
            "IN is only read. Each table comes over whose definition can be read, with every record and field that is\n"
            "in order; where a map of pages is damaged all pages of the file are looked at. Indexes are built anew.\n"
            "Each page, record, field and index that is lost is told with its reason; records are named by page and\n"
            "row on the page, as \"kelb db check\" names them. A long text whose end is lost is kept as far as it "
            "goes.\n"
            "A report is one object a line, with what applies of kind, table, page, row, field, index and reason, and "
            "a\n"
            "line with the counts at the end. Exit status: 0 all was saved, 1 something is lost or nothing could be "
            "read.");
    }

    int run(Program& program) override {
        const std::u16string target = platform::fromUtf8(target_);
        std::optional<FileWriter> report;
        if (!report_.empty()) {
            report.emplace(program.platform().files, platform::fromUtf8(report_));
        }
        CopyHost host(program, std::cerr, report ? &*report : nullptr);
        return copyUnlessStopped(host, [&]() -> int {
            const jet::RecoveryCounts counts = jet::recoverDatabase(program.platform(), path(), target, host);
            host.finish();
            if (report) {
                *report << countsJson(counts) << '\n';
                report->finish();
            }
            std::cout << copySummary(target, counts) << "; lost: " << counts.pagesLost << " pages, " << counts.rowsLost
                      << " rows, " << counts.fieldsLost << " fields, " << counts.otherLosses << " other\n";
            return counts.everything() ? kDone : kFailed;
        });
    }

private:
    static std::string countsJson(const jet::RecoveryCounts& counts) {
        return "{\"tables\": " + std::to_string(counts.tables) + ", \"rows\": " + std::to_string(counts.rows) +
               ", \"indexes\": " + std::to_string(counts.indexes) +
               ", \"pagesLost\": " + std::to_string(counts.pagesLost) +
               ", \"rowsLost\": " + std::to_string(counts.rowsLost) +
               ", \"fieldsLost\": " + std::to_string(counts.fieldsLost) +
               ", \"otherLosses\": " + std::to_string(counts.otherLosses) + "}";
    }

    std::string target_, report_;
};

} // namespace

CommandPointer makeDbRecover(CLI::App& db) {
    return std::make_unique<DbRecoverCommand>(db);
}

} // namespace kelb::cli
