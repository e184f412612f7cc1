#pragma once

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// What goes into an operation of `kelb call` and what comes out of it.
namespace kelb::cli {

using Json = nlohmann::ordered_json;

/// A request that cannot be carried out as it stands; what() tells its sender why.
class CallError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

enum class ArgumentKind { Text, Flag, Number, Texts }; ///< Number: whole, of 32 bits

struct Argument {
    Argument(const char* argumentName, ArgumentKind argumentKind = ArgumentKind::Text)
        : name(argumentName), kind(argumentKind) {}

    std::string_view name;
    ArgumentKind kind;
};

/// The values of one request, checked against what the operation takes.
class CallArguments {
public:
    /// `values` must outlive this. Throws CallError for a wrong number or type.
    CallArguments(const Json& values, const std::vector<Argument>& wanted);

    [[nodiscard]] std::u16string text(std::size_t index) const;
    [[nodiscard]] bool flag(std::size_t index) const;
    [[nodiscard]] std::int32_t number(std::size_t index) const;
    [[nodiscard]] std::vector<std::u16string> texts(std::size_t index) const;

private:
    const Json& values_;
};

struct CallAnswer {
    std::optional<Json> result; ///< none for an operation without one
    std::vector<Json> out;      ///< in/out and output arguments in their order
};

[[nodiscard]] Json toJson(const std::u16string& text);
[[nodiscard]] Json toJson(const std::vector<std::u16string>& texts);
[[nodiscard]] inline Json toJson(bool flag) {
    return flag;
}
[[nodiscard]] inline Json toJson(std::int16_t number) {
    return number;
}
[[nodiscard]] inline Json toJson(std::int32_t number) {
    return number;
}
[[nodiscard]] inline Json toJson(std::size_t number) {
    return number;
}

template <typename... Outs>
CallAnswer onlyOut(const Outs&... outs) {
    CallAnswer answer;
    (answer.out.push_back(toJson(outs)), ...);
    return answer;
}

template <typename Result, typename... Outs>
CallAnswer answer(const Result& result, const Outs&... outs) {
    CallAnswer whole = onlyOut(outs...);
    whole.result = toJson(result);
    return whole;
}

} // namespace kelb::cli
