#pragma once

#include "cli/call_arguments.h"
#include "cli/call_objects.h"

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
