#pragma once

#include "jobs/sink_connection.h"

#include <CLI/CLI.hpp>

#include <string>

namespace kelb::cli {

/// --server and --connection of the jobs that store into a SQL Server or what the user names instead.
class SinkArguments {
public:
    explicit SinkArguments(CLI::App& command);
    jobs::SinkOptions chosen() const;

private:
    std::string server_, connection_;
};

} // namespace kelb::cli
