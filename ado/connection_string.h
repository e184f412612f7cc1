#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelb::ado {

/// `key=value` parted by ";". A value may hold "="; it may stand in quotes ("…" or '…', doubled inside) to hold ";".
/// Keys are compared without case. The FIRST Provider wins and otherwise the LAST value of a key, so that
/// "Provider=P;Data Source=Provider=P;Data Source=x.mdb" opens x.mdb.
class ConnectionString {
public:
    explicit ConnectionString(std::u16string_view text);
    /// "" when absent.
    std::u16string value(std::u16string_view key) const;
    bool has(std::u16string_view key) const;
    /// One more part at the end.
    void add(std::u16string_view key, std::u16string_view value);
    /// The text with the values of Password and Pwd as "***", for messages.
    std::u16string shown() const;
    const std::vector<std::pair<std::u16string, std::u16string>>& parts() const noexcept { return parts_; }

private:
    std::vector<std::pair<std::u16string, std::u16string>> parts_;
};

/// "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + path; a path that holds ";" is put in quotes.
/// One with this prefix already gets it a second time, which changes nothing.
[[nodiscard]] std::u16string jetConnectionString(std::u16string_view path);

} // namespace kelb::ado
