#include "cli/command_line.h"

#include "cli/commands.h"
#include "jobs/job_error.h"

#include <algorithm>
#include <iostream>
#include <string>

namespace kelb::cli {
namespace {

constexpr const char* kPurpose = "Turns pages that a crawler saved into clean articles in Access databases (.mdb).\n"
                                 "The jobs are those of the main window's buttons.";

constexpr const char* kExamples =
    "Examples:\n"
    "  kelb db tables Comb.mdb\n"
    "  kelb db query Comb.mdb \"select top 5 id, url from bbsforum where cid=28\"\n"
    "  kelb forum-import --source Comb.mdb --dest wxdb.mdb --lan-folder /crawl/ --dry-run\n"
    "  kelb forum-import --source Comb.mdb --dest wxdb.mdb --lan-folder /crawl/ --trash /crawl/trash\n"
    "\n"
    "The application folder holds Kelb.ini (settings), ADMarks.txt (lines that mark advertising), userNames.txt and\n"
    "TestRec/ (over-long articles). Log entries go to standard output, progress to standard error; the last line of a\n"
    "job is its summary as JSON. Exit status: 0 done, 1 database, file or set-up error, 2 wrong usage or missing\n"
    "setting, 3 stopped by Ctrl-C.\n"
    "\"kelb COMMAND --help\" tells more about one command.";

void declareCommonOptions(CLI::App& kelb, CommonOptions& options) {
    const std::string group = "Common options, before or after the command";
    kelb.add_option("--home", options.home, "Application folder [KELB_HOME, else the folder of this program]")
        ->type_name("DIR")
        ->group(group);
    kelb.add_option("--ini", options.ini, "Settings file [Kelb.ini in the application folder]")
        ->type_name("FILE")
        ->group(group);
    kelb.add_option("--trash", options.trash, "Keep what a job deletes in a new folder below this one")
        ->type_name("DIR")
        ->group(group);
    kelb.add_flag("--dry-run", options.dryRun, "Do and tell everything, but change no row and no file")->group(group);
    kelb.add_flag("--yes", options.yes, "Go on where the window would ask")->group(group);
    kelb.add_flag("--force", options.force, "Write although a lock file of Access lies beside the database")
        ->group(group);
    kelb.add_flag("--quiet", options.quiet, "No progress on standard error")->group(group);
    kelb.add_flag("--no-summary", options.noSummary, "No summary line at the end of a job")->group(group);
}

/// In the order in which the help lists them.
std::vector<CommandPointer> makeCommands(CLI::App& kelb) {
    std::vector<CommandPointer> commands;
    for (const auto make :
         {makeForumImport, makeForumFill, makeArticleImport, makeMultipageImport, makeDedupeSource, makeDedupeDest,
          makeFaultMerge, makeExportUsers, makeAddFields, makeUndo, makeParamImport, makeTemplateExtract}) {
        commands.push_back(make(kelb));
    }
    for (const auto makeGroup : {makeCounterCommands, makeDatabaseCommands}) {
        for (CommandPointer& command : makeGroup(kelb)) {
            commands.push_back(std::move(command));
        }
    }
    for (const auto make : {makeCall, makeSegment, makeSheet, makeView, makeSettings}) {
        commands.push_back(make(kelb));
    }
    return commands;
}

int fail(const std::string& message, ExitStatus status) {
    std::string line = message;
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    std::cout.flush();
    std::cerr << "kelb: " << line << std::endl;
    return status;
}

int runChosen(const std::vector<CommandPointer>& commands, const CommonOptions& options) {
    const auto command =
        std::find_if(commands.begin(), commands.end(), [](const CommandPointer& c) { return c->chosen(); });
    try {
        Program program(options);
        const int status = (*command)->run(program);
        program.context().databases().flushAll();
        if (!std::cout.flush()) {
            return fail("standard output cannot be written", kFailed);
        }
        return status;
    } catch (const jobs::SettingError& error) {
        return fail(error.what(), kUsage);
    } catch (const jobs::Refused& error) {
        return fail(error.what(), kUsage);
    } catch (const std::exception& error) {
        return fail(error.what(), kFailed);
    }
}

/// The command as far as the arguments named one: "kelb", "kelb db", "kelb db query".
std::string namedCommand(const CLI::App& kelb) {
    std::string words = kelb.get_name();
    for (auto named = kelb.get_subcommands(); !named.empty(); named = named.front()->get_subcommands()) {
        words += " " + named.front()->get_name();
    }
    return words;
}

} // namespace

int runKelb(int count, const char* const* arguments) {
    std::ios::sync_with_stdio(false);
    CLI::App kelb(kPurpose, "kelb");
    kelb.allow_windows_style_options(false); // "/crawl" is a folder, also on Windows
    kelb.footer(kExamples);
    kelb.set_version_flag("--version", "kelb " KELB_VERSION);
    kelb.require_subcommand(1);
    kelb.fallthrough(); // lets the common options stand behind a command
    kelb.get_formatter()->column_width(34);
    CommonOptions options;
    declareCommonOptions(kelb, options);
    const std::vector<CommandPointer> commands = makeCommands(kelb);
    try {
        kelb.parse(count, arguments);
    } catch (const CLI::Success& request) { // --help, --version
        return kelb.exit(request, std::cout, std::cerr);
    } catch (const CLI::ParseError& error) {
        // A word that is no command is told as a missing one, and the word is left over.
        const std::vector<std::string> left = kelb.remaining(true);
        const bool unknown = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr && !left.empty();
        return fail((unknown ? "there is no command " + left.front() : std::string(error.what())) + ". See " +
                        namedCommand(kelb) + " --help.",
                    kUsage);
    }
    return runChosen(commands, options);
}

} // namespace kelb::cli
