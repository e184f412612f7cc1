#pragma once

#include <string>

namespace kelb::ado::testing {

/// A PostgreSQL server of one's own on loopback, behind the driver name "SQL Server", with the databases wxDB and
/// mendDB, so that the built-in connection strings work with the server "127.0.0.1". Its variables (PGPORT, PGUSER,
/// ODBCSYSINI) stand in this process's environment from then on, so one process has one server. Nothing is left behind,
/// whatever becomes of the process. It takes about 2 s to start. KELB_POSTGRES_SERVER is the script that does it.
class PostgresServer {
public:
    /// Throws std::runtime_error when it does not start, with what the script says.
    PostgresServer();
    ~PostgresServer();
    PostgresServer(const PostgresServer&) = delete;
    PostgresServer& operator=(const PostgresServer&) = delete;

    /// The server that this process's tests share; started at the first call, stopped when the process ends.
    static PostgresServer& shared();

    const std::string& port() const noexcept { return port_; }
    const std::string& folder() const noexcept { return folder_; } ///< holds odbcinst.ini

    void kill();  ///< every session ends at once
    void start(); ///< after kill(): the same port, the same data

private:
    void ask(const std::string& command);
    std::string readLine();

    int toServer_ = -1, fromServer_ = -1, process_ = -1;
    std::string port_, folder_;
};

} // namespace kelb::ado::testing
