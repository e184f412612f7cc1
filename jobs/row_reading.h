#pragma once

#include "ado/provider.h"
#include "ado/value.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// Lines written by jobs/row_text.h, read back.
namespace kelb::jobs {

/// A line that is none of ours.
class RowLineError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// One member of the object of a line.
struct RowMember {
    enum class Kind { Null, No, Yes, Number, Text };
    std::u16string name;
    Kind kind = Kind::Null;
    std::u16string text; ///< Text: the text; Number: its characters
};

/// The members in their order. The line holds one object with nothing nested. Throws RowLineError.
[[nodiscard]] std::vector<RowMember> readRowLine(std::string_view line);
/// The member of this name, else null.
[[nodiscard]] const RowMember* findMember(const std::vector<RowMember>& members, std::u16string_view name) noexcept;

/// The value that the field had when the line was written; date-times to the second. Throws RowLineError when the
/// member does not fit the field.
[[nodiscard]] ado::Value valueOf(const RowMember& member, const ado::FieldInfo& field);

} // namespace kelb::jobs
