#pragma once

#include "jobs/sink_connection.h"
#include "tests/jobs/job_fixture.h"
#include "tests/odbc/postgres_server.h"

#include <functional>

namespace kelb::jobs {

/// A job's fixture beside the shared server.
template <class Fixture>
class ServerJob : public Fixture {
protected:
    static constexpr std::u16string_view kServer = u"127.0.0.1";

    ServerJob() { ado::testing::PostgresServer::shared(); }

    void onServer(const std::function<void(ado::Connection&)>& work) {
        auto at = this->platformOf(this->files);
        ado::Environment environment(at, {});
        ado::Connection server(environment);
        server.Open(wxDbConnectionString(kServer));
        work(server);
    }
};

} // namespace kelb::jobs
