#pragma once

#include "ado/connection.h"
#include "ado/connection_string.h"
#include "ado/environment.h"
#include "ado/error.h"
#include "ado/recordset.h"
#include "jet/verify.h"

#include "platform/clock.h"
#include "platform/memory_file_system.h"
#include "platform/platform.h"
#include "platform/random.h"
#include "platform/utf8.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelb::ado::testing {

class StandingClock final : public platform::Clock {
public:
    platform::DateTime now() const override { return {2015, 12, 2, 8, 30, 0}; }
    double steadySeconds() const override { return seconds; }
    double seconds = 0; ///< moves only when a test says so
};

/// What an Error says of itself; no value when `work` threw none.
struct Caught {
    Error::Kind kind;
    std::string text;
};
template <class Work>
std::optional<Caught> errorOf(Work&& work) {
    try {
        work();
    } catch (const Error& error) {
        return Caught{error.kind(), error.what()};
    }
    return std::nullopt;
}

/// An empty database in memory and an open connection to it.
class AdoFixture : public ::testing::Test {
public:
    AdoFixture() {
        jet::Database::create(platform_, path)->commit();
        start({});
    }

    /// A test's hook may refer to variables that are gone when the connection is closed.
    void TearDown() override { files.beforeOperation = nullptr; }

    /// A new run of the program.
    void start(Environment::Options options) {
        connection.reset();
        environment = std::make_unique<Environment>(platform_, options);
        connection = std::make_unique<Connection>(*environment);
        connection->Open(jetConnectionString(path));
    }
    std::size_t execute(std::u16string_view statement) { return connection->Execute(statement); }

    Recordset open(std::u16string_view select, LockType lock = LockType::Optimistic) {
        Recordset set;
        set.Open(select, *connection, CursorType::Keyset, lock);
        return set;
    }

    /// Fields joined by "|", rows by " / "; Null is "~".
    static std::string show(Recordset& set) {
        std::string text;
        for (; !set.Eof(); set.MoveNext()) {
            text += text.empty() ? "" : " / ";
            for (std::size_t i = 0; i < set.fieldCount(); ++i) {
                const Value value = set.value(i);
                text += (i == 0 ? "" : "|") + (isNull(value) ? std::string("~") : platform::toUtf8(toText(value)));
            }
        }
        return text;
    }
    std::string rows(std::u16string_view select) {
        Recordset set = open(select, LockType::ReadOnly);
        return show(set);
    }
    std::size_t count(std::u16string_view select) { return open(select, LockType::ReadOnly).RecordCount(); }

    /// What the engine's own check says of the file as it is now.
    std::string faults() {
        environment->flushAll();
        std::string text;
        const auto database = environment->openDatabase(path, jet::Pager::Access::Read);
        for (const jet::Fault& fault : jet::verify(*database)) {
            text += fault.text + "\n";
        }
        return text;
    }

    const std::u16string path = u"D:\\KelbFolder\\Comb.mdb";
    platform::MemoryFileSystem files;
    StandingClock clock;
    platform::SystemRandom random;
    platform::Platform platform_{files, clock, random, u"D:\\Program"};
    std::unique_ptr<Environment> environment;
    std::unique_ptr<Connection> connection;
};

} // namespace kelb::ado::testing
