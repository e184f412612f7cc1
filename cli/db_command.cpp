#include "cli/db_command.h"

#include "ado/connection_string.h"
#include "cli/commands.h"
#include "platform/terminal.h"
#include "platform/utf8.h"

namespace kelb::cli {

DatabaseCommand::DatabaseCommand(CLI::App& db, const std::string& name, const std::string& purpose,
                                 const std::string& argument)
    : Command(db.add_subcommand(name, purpose)) {
    declared().add_option(argument, file_, "The database, an .mdb file")->required()->type_name("");
}

std::u16string DatabaseCommand::path() const {
    return platform::fromUtf8(file_);
}

void DatabaseCommand::open(ado::Connection& connection, ado::Connection::Mode mode) const {
    connection.mode = mode;
    connection.Open(ado::jetConnectionString(path()));
}

FormatOption::FormatOption(CLI::App& command, Choices choices) : choices_(choices) {
    CLI::Option* option = command.add_option("--format", name_);
    if (choices == Choices::All) {
        option->description("table, jsonl or csv [table on a terminal, else jsonl]");
        option->check(CLI::IsMember({"table", "jsonl", "csv"}));
    } else {
        option->description("jsonl or csv [jsonl]");
        option->check(CLI::IsMember({"jsonl", "csv"}));
    }
    option->type_name("NAME");
}

RowFormat FormatOption::chosen() const {
    if (name_ == "csv") {
        return RowFormat::Csv;
    }
    const bool table = name_ == "table" || (name_.empty() && choices_ == Choices::All &&
                                            platform::isTerminal(platform::StandardStream::Output));
    return table ? RowFormat::Table : RowFormat::Jsonl;
}

std::u16string bracketed(std::u16string_view name) {
    std::u16string text = u"[";
    text += name;
    text += u"]";
    return text;
}

std::vector<CommandPointer> makeDatabaseCommands(CLI::App& kelb) {
    CLI::App& db = *kelb.add_subcommand("db", "Look into Access databases, create and change them");
    db.require_subcommand(1);
    db.footer("Examples:\n"
              "  kelb db create new.mdb\n"
              "  kelb db exec new.mdb \"create table notes (id int identity(1,1), title varchar(255), body memo)\"\n"
              "  echo '{\"title\": \"滚筒洗衣机\"}' | kelb db import new.mdb notes\n"
              "  kelb db query new.mdb \"select * from notes where title like '%洗衣机%'\"");
    std::vector<CommandPointer> commands;
    for (const auto make : {makeDbCreate, makeDbTables, makeDbSchema, makeDbQuery, makeDbExec, makeDbExport,
                            makeDbImport, makeDbCheck, makeDbCompact, makeDbRecover}) {
        commands.push_back(make(db));
    }
    return commands;
}

} // namespace kelb::cli
