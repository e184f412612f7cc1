#pragma once

#include "cli/command.h"

#include <memory>
#include <vector>

namespace kelb::cli {

using CommandPointer = std::unique_ptr<Command>;

CommandPointer makeForumImport(CLI::App& kelb);
CommandPointer makeForumFill(CLI::App& kelb);
CommandPointer makeDedupeSource(CLI::App& kelb);
CommandPointer makeDedupeDest(CLI::App& kelb);
CommandPointer makeFaultMerge(CLI::App& kelb);
CommandPointer makeExportUsers(CLI::App& kelb);
CommandPointer makeAddFields(CLI::App& kelb);
CommandPointer makeUndo(CLI::App& kelb);
CommandPointer makeArticleImport(CLI::App& kelb);
CommandPointer makeMultipageImport(CLI::App& kelb);
CommandPointer makeParamImport(CLI::App& kelb);
CommandPointer makeTemplateExtract(CLI::App& kelb);
CommandPointer makeCall(CLI::App& kelb);
CommandPointer makeSegment(CLI::App& kelb);
CommandPointer makeSettings(CLI::App& kelb);
CommandPointer makeSheet(CLI::App& kelb);
CommandPointer makeView(CLI::App& kelb);

/// "counter" and its own commands.
std::vector<CommandPointer> makeCounterCommands(CLI::App& kelb);

/// "db" and its own commands.
std::vector<CommandPointer> makeDatabaseCommands(CLI::App& kelb);
CommandPointer makeDbCreate(CLI::App& db);
CommandPointer makeDbTables(CLI::App& db);
CommandPointer makeDbSchema(CLI::App& db);
CommandPointer makeDbQuery(CLI::App& db);
CommandPointer makeDbExec(CLI::App& db);
CommandPointer makeDbExport(CLI::App& db);
CommandPointer makeDbImport(CLI::App& db);
CommandPointer makeDbCheck(CLI::App& db);
CommandPointer makeDbCompact(CLI::App& db);
CommandPointer makeDbRecover(CLI::App& db);

} // namespace kelb::cli
