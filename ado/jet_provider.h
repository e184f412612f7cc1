#pragma once

#include "ado/provider.h"

namespace kelb::ado {

/// Access databases through our own engine: Microsoft.Jet.OLEDB.4.0 and Microsoft.ACE.OLEDB.12.0, whatever the version
/// of the file. Of the connection string it uses Data Source and Mode.
class JetProvider final : public Provider {
public:
    bool accepts(const ConnectionString& connection) const override;
    std::unique_ptr<Session> connect(const ConnectionString& connection, Environment& environment) override;
};

} // namespace kelb::ado
