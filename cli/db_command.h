#pragma once

#include "ado/connection.h"
#include "cli/command.h"
#include "cli/row_output.h"

#include <string>
#include <string_view>

namespace kelb::cli {

/// A command on one database file, its first argument.
class DatabaseCommand : public Command {
protected:
    DatabaseCommand(CLI::App& db, const std::string& name, const std::string& purpose,
                    const std::string& argument = "FILE");

    std::u16string path() const;
    void open(ado::Connection& connection, ado::Connection::Mode mode) const;

private:
    std::string file_;
};

/// --format with its choices; the default depends on where standard output goes.
class FormatOption {
public:
    enum class Choices { All, WithoutTable };
    FormatOption(CLI::App& command, Choices choices);
    RowFormat chosen() const;

private:
    Choices choices_;
    std::string name_;
};

/// A name as statements write it, [name].
[[nodiscard]] std::u16string bracketed(std::u16string_view name);

} // namespace kelb::cli
