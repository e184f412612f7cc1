#pragma once

#ifdef _WIN32
#include "platform/windows_headers.h" // what follows is written in its words
#endif

#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>

#include <cstdint>
#include <string_view>
#include <utility>

/// The driver manager's C interface, for the odbc_*.cpp files and the headers that they share among themselves. Only
/// its W functions are used: every driver takes and gives UTF-16 there, whatever its own code page.
namespace kelb::ado {

static_assert(sizeof(SQLWCHAR) == sizeof(char16_t), "the driver manager must be built for UTF-16");

/// Texts are passed with their length, never by a zero at their end.
inline SQLWCHAR* odbcText(const char16_t* text) noexcept {
    return reinterpret_cast<SQLWCHAR*>(const_cast<char16_t*>(text)); // NOLINT(*): input that is never written to
}
inline SQLWCHAR* odbcText(char16_t* text) noexcept {
    return reinterpret_cast<SQLWCHAR*>(text);
}
inline SQLSMALLINT odbcLength(std::u16string_view text) noexcept {
    return static_cast<SQLSMALLINT>(text.size());
}
/// Attributes that are numbers travel in a pointer.
inline SQLPOINTER odbcNumber(std::uintptr_t number) noexcept {
    return reinterpret_cast<SQLPOINTER>(number); // NOLINT(performance-no-int-to-ptr)
}

/// Owns an environment, connection or statement handle; none when it could not be made.
class OdbcHandle {
public:
    OdbcHandle(SQLSMALLINT type, SQLHANDLE parent) noexcept : type_(type) {
        if (!SQL_SUCCEEDED(SQLAllocHandle(type, parent, &handle_))) {
            handle_ = nullptr;
        }
    }
    ~OdbcHandle() { reset(); }
    OdbcHandle(OdbcHandle&& other) noexcept : type_(other.type_), handle_(std::exchange(other.handle_, nullptr)) {}
    OdbcHandle& operator=(OdbcHandle&& other) noexcept {
        std::swap(type_, other.type_);
        std::swap(handle_, other.handle_);
        return *this;
    }

    SQLHANDLE get() const noexcept { return handle_; }
    SQLSMALLINT type() const noexcept { return type_; }
    void reset() noexcept {
        if (handle_ != nullptr) {
            SQLFreeHandle(type_, std::exchange(handle_, nullptr));
        }
    }

private:
    SQLSMALLINT type_;
    SQLHANDLE handle_ = nullptr;
};

} // namespace kelb::ado
