#pragma once

#include "ado/error.h"
#include "ado/odbc_api.h"

#include <string>
#include <string_view>

namespace kelb::ado {

/// Who is talked to, for messages: "driver sql server, server 10.0.0.5, database wxDB". Nothing here is a secret but
/// the password, which is taken out of whatever a driver says.
struct OdbcPlace {
    std::u16string shown;
    std::u16string password;
    std::string advice; ///< what to do when the driver cannot be loaded; may be empty
};

/// What an error says beside the reason, as in "cannot …: reason; statement: …".
struct OdbcDoing {
    std::string_view action;
    std::u16string_view table;     ///< "" when the statement tells
    std::u16string_view statement; ///< "" when there is none
};

[[nodiscard]] Error::Kind odbcErrorKind(std::string_view sqlState, int nativeCode) noexcept;

[[nodiscard]] Error odbcError(Error::Kind kind, const OdbcPlace& place, const OdbcDoing& doing,
                              const std::string& reason, const std::string& state = {});

/// Throws Error with everything that driver manager, driver and server say of the handle's last call.
[[noreturn]] void throwOdbcError(const OdbcHandle& handle, const OdbcPlace& place, const OdbcDoing& doing);

} // namespace kelb::ado
