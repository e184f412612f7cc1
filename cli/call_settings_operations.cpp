#include "app/RWIni.h"
#include "cli/call_operations.h"

namespace kelb::cli {

std::vector<CallOperation> settingsOperations() {
    return {
        {"RWIni.ReadIni",
         {"key", "section", "path"},
         {},
         [](CallObjects& objects, const CallArguments& given) {
             const platform::Platform& platform = objects.platform();
             return answer(app::RWIni::ReadIni(given.text(0), given.text(1), given.text(2), platform.files,
                                               platform.applicationFolder));
         }},
    };
}

} // namespace kelb::cli
