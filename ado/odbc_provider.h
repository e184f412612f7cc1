#pragma once

#include "ado/provider.h"

#include <chrono>
#include <memory>

namespace kelb::ado {

/// Any database that has an ODBC driver: Driver={…};…, DSN=…, or Provider=MSDASQL. The driver manager is asked for the
/// first time when the first connection is opened. What its record sets can do: odbc_row_set.h.
class OdbcProvider final : public Provider {
public:
    static constexpr std::chrono::seconds kLoginTimeout{15};
    explicit OdbcProvider(std::chrono::seconds loginTimeout = kLoginTimeout);
    ~OdbcProvider() override;

    bool accepts(const ConnectionString& connection) const override;
    std::unique_ptr<Session> connect(const ConnectionString& connection, Environment& environment) override;

private:
    class Manager;
    std::chrono::seconds loginTimeout_;
    std::unique_ptr<Manager> manager_; ///< none before the first connection
};

} // namespace kelb::ado
