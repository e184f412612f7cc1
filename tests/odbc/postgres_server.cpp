#include "tests/odbc/postgres_server.h"

#include <array>
#include <cstdlib>
#include <stdexcept>

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kelb::ado::testing {
namespace {

constexpr int kRead = 0, kWrite = 1;

std::array<int, 2> makePipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe for the PostgreSQL server");
    }
    return ends;
}

} // namespace

PostgresServer::PostgresServer() {
    std::signal(SIGPIPE, SIG_IGN); // a script that ended early is told by what it wrote
    const std::array<int, 2> input = makePipe(), output = makePipe();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[kRead], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output[kWrite], STDOUT_FILENO);
    std::string script = KELB_POSTGRES_SERVER;
    std::array<char*, 2> arguments{script.data(), nullptr};
    const int fault = ::posix_spawn(&process_, script.c_str(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(input[kRead]);
    ::close(output[kWrite]);
    toServer_ = input[kWrite];
    fromServer_ = output[kRead];
    if (fault != 0) {
        throw std::runtime_error("cannot run " + script);
    }
    const std::string line = readLine();
    const std::size_t blank = line.find(' ');
    if (blank == std::string::npos) {
        throw std::runtime_error("the PostgreSQL server does not start: see the script's message");
    }
    port_ = line.substr(0, blank);
    folder_ = line.substr(blank + 1);
    ::setenv("PGPORT", port_.c_str(), 1);
    ::setenv("PGUSER", "sa", 1); // the login of strings without one
    ::setenv("ODBCSYSINI", folder_.c_str(), 1);
}

PostgresServer::~PostgresServer() {
    ::close(toServer_); // the script cleans up at the end of its input
    int status = 0;
    ::waitpid(process_, &status, 0);
    ::close(fromServer_);
}

PostgresServer& PostgresServer::shared() {
    static PostgresServer server;
    return server;
}

std::string PostgresServer::readLine() {
    std::string line;
    char unit = 0;
    while (::read(fromServer_, &unit, 1) == 1 && unit != '\n') {
        line += unit;
    }
    return line;
}

void PostgresServer::ask(const std::string& command) {
    const std::string line = command + "\n";
    if (::write(toServer_, line.data(), line.size()) != static_cast<ssize_t>(line.size()) || readLine() != "ok") {
        throw std::runtime_error("the PostgreSQL server did not obey: " + command);
    }
}

void PostgresServer::kill() {
    ask("kill");
}

void PostgresServer::start() {
    ask("start");
}

} // namespace kelb::ado::testing
