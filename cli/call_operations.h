#pragma once

#include "cli/call_arguments.h"
#include "cli/call_objects.h"

#include <initializer_list>
#include <string_view>
#include <vector>

namespace kelb::cli {

/// One row of the table behind `kelb call`.
struct CallOperation {
    std::string_view name;
    std::vector<Argument> arguments;
    std::vector<std::string_view> out; ///< names of what comes back beside the result
    CallAnswer (*run)(CallObjects& objects, const CallArguments& arguments);
};

/// What most rows run: from one text to a result.
template <auto Operation>
CallAnswer ofText(CallObjects&, const CallArguments& given) {
    return answer(Operation(given.text(0)));
}

/// The rows of the chapters, one behind the other.
[[nodiscard]] std::vector<CallOperation> joined(std::initializer_list<std::vector<CallOperation>> chapters);

/// Every operation: those on the process itself, then one chapter of rows per folder.
[[nodiscard]] const std::vector<CallOperation>& callOperations();

/// No value (null) for an unknown name.
[[nodiscard]] const CallOperation* findCallOperation(std::string_view name);

[[nodiscard]] std::vector<CallOperation> rewriteOperations();  ///< call_rewrite_operations.cpp
[[nodiscard]] std::vector<CallOperation> extractOperations();  ///< call_extract_operations.cpp
[[nodiscard]] std::vector<CallOperation> articleOperations();  ///< call_article_operations.cpp
[[nodiscard]] std::vector<CallOperation> templateOperations(); ///< call_template_operations.cpp
[[nodiscard]] std::vector<CallOperation> siteOperations();     ///< call_site_operations.cpp
[[nodiscard]] std::vector<CallOperation> segmentOperations();  ///< call_segment_operations.cpp
[[nodiscard]] std::vector<CallOperation> settingsOperations(); ///< call_settings_operations.cpp

} // namespace kelb::cli
