#include "cli/sink_arguments.h"

#include "platform/utf8.h"

namespace kelb::cli {

SinkArguments::SinkArguments(CLI::App& command) {
    auto* server = command.add_option("--server", server_, "SQL Server that has the database wxDB");
    server->type_name("HOST");
    command
        .add_option("--connection", connection_,
                    "Connection string of any database, or the path of an .mdb file [[SqlServer]]")
        ->type_name("TEXT")
        ->excludes(server);
}

jobs::SinkOptions SinkArguments::chosen() const {
    return {.connection = platform::fromUtf8(connection_), .server = platform::fromUtf8(server_)};
}

} // namespace kelb::cli
