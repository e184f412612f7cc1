#pragma once

#include "ado/provider.h"
#include "ado/value.h"

#include <nlohmann/json.hpp>

#include <stdexcept>

namespace kelb::cli {

/// A JSON value that a field cannot take; what() says which and what it takes.
class JsonValueError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The field's value from the JSON form in which rows are printed: null, true and false, numbers, texts; date-times
/// and binary as texts, currency and decimal as texts or numbers. Throws JsonValueError.
[[nodiscard]] ado::Value fromJson(const nlohmann::json& json, const ado::FieldInfo& field);

} // namespace kelb::cli
