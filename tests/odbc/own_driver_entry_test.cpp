#include "ado/odbc_provider.h"
#include "tests/ado/ado_fixture.h"
#include "tests/platform/temporary_folder.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

/// The built-in connection string on a system whose driver manager knows no driver of the name "SQL Server".
namespace kelb::ado::testing {
namespace {

/// Takes connections and never says a word.
class SilentServer {
public:
    SilentServer() : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof(address);
        auto* place = reinterpret_cast<sockaddr*>(&address);
        if (::bind(socket_, place, size) != 0 || ::listen(socket_, 4) != 0 ||
            ::getsockname(socket_, place, &size) != 0) {
            ADD_FAILURE() << "no socket";
        }
        port_ = ntohs(address.sin_port);
    }
    ~SilentServer() { ::close(socket_); }
    SilentServer(const SilentServer&) = delete;
    SilentServer& operator=(const SilentServer&) = delete;
    std::u16string port() const { return platform::fromUtf8(std::to_string(port_)); }

private:
    int socket_;
    int port_ = 0;
};

class OwnDriverEntry : public ::testing::Test {
protected:
    OwnDriverEntry() {
        // The driver manager's own files, of the system and of the user: only what a test writes there.
        ::setenv("ODBCSYSINI", folder().native().c_str(), 1);
        ::setenv("HOME", folder().native().c_str(), 1);
        std::filesystem::remove(entries());
    }
    static void install(const std::string& text) { std::ofstream(entries()) << text; }
    /// One for all tests: the driver manager remembers where it found its files.
    static const platform::TemporaryFolder& folder() {
        static const platform::TemporaryFolder only;
        return only;
    }
    static std::filesystem::path entries() { return folder().native() / "odbcinst.ini"; }

    struct Refusal {
        Caught error;
        double seconds;
    };
    Refusal opening(std::u16string_view port, std::chrono::seconds loginTimeout) {
        Environment run(platform_, {});
        run.add(std::make_unique<OdbcProvider>(loginTimeout));
        const auto begun = std::chrono::steady_clock::now();
        const auto caught = errorOf([&] {
            Connection connection(run);
            connection.Open(u"driver={sql server};server=127.0.0.1;Database=wxDB;uid=sa;pwd=;port=" +
                            std::u16string(port));
        });
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begun;
        return {caught.value_or(Caught{Error::Kind::Refused, "it was opened"}), taken.count()};
    }

    platform::MemoryFileSystem files;
    StandingClock clock;
    platform::SystemRandom random;
    platform::Platform platform_{files, clock, random, u"D:\\Program"};
};

TEST_F(OwnDriverEntry, LoadsFreeTdsWhichGivesUpWhenNobodyListens) {
    const Refusal refusal = opening(u"1", std::chrono::seconds(3));
    EXPECT_EQ(refusal.error.kind, Error::Kind::Connection) << refusal.error.text;
    EXPECT_NE(refusal.error.text.find("(through FreeTDS)"), std::string::npos) << refusal.error.text;
    EXPECT_NE(refusal.error.text.find("[FreeTDS]"), std::string::npos) << refusal.error.text; // its own words
    EXPECT_NE(refusal.error.text.find("SQLSTATE 08"), std::string::npos) << refusal.error.text;
    EXPECT_LT(refusal.seconds, 3);
}

TEST_F(OwnDriverEntry, GivesUpASilentServerAfterTheLoginTime) {
    const SilentServer silent;
    const Refusal refusal = opening(silent.port(), std::chrono::seconds(2));
    EXPECT_EQ(refusal.error.kind, Error::Kind::Connection) << refusal.error.text;
    EXPECT_GT(refusal.seconds, 1);
    EXPECT_LT(refusal.seconds, 8);
}

TEST_F(OwnDriverEntry, AMissingLibraryIsToldWithWhatToInstall) {
    install("[Half installed]\nDriver=/nowhere/libtdsodbc.so\n");
    const Refusal refusal = opening(u"1", std::chrono::seconds(3));
    EXPECT_EQ(refusal.error.kind, Error::Kind::Connection) << refusal.error.text;
    EXPECT_NE(refusal.error.text.find("/nowhere/libtdsodbc.so"), std::string::npos) << refusal.error.text;
    EXPECT_NE(refusal.error.text.find("package tdsodbc"), std::string::npos) << refusal.error.text;
    EXPECT_NE(refusal.error.text.find("installed are: Half installed"), std::string::npos) << refusal.error.text;
}

TEST_F(OwnDriverEntry, StandsBackBehindTheSystems) {
    install("[sql SERVER]\nDriver=/nowhere/libother.so\n");
    const Refusal refusal = opening(u"1", std::chrono::seconds(3));
    EXPECT_NE(refusal.error.text.find("/nowhere/libother.so"), std::string::npos) << refusal.error.text;
    EXPECT_EQ(refusal.error.text.find("FreeTDS"), std::string::npos) << refusal.error.text;
}

} // namespace
} // namespace kelb::ado::testing
