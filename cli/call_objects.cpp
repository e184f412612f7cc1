#include "cli/call_objects.h"

#include "platform/file_system.h"
#include "platform/path_map.h"

namespace kelb::cli {

rewrite::ClsSmart& CallObjects::smart() {
    if (!state_.smart) {
        state_.smart = std::make_unique<rewrite::ClsSmart>(platform_.files, platform_.applicationFolder);
    }
    return *state_.smart;
}

const extract::UserNames& CallObjects::userNames() {
    if (!state_.userNames) {
        const bool there =
            platform_.files.fileExists(platform::joinPath(platform_.applicationFolder, u"userNames.txt"));
        state_.userNames =
            there ? extract::UserNames::read(platform_.files, platform_.applicationFolder) : extract::UserNames();
    }
    return *state_.userNames;
}

segment::ClsFenCi& CallObjects::fenCi() {
    if (!state_.fenCi) {
        state_.fenCi = std::make_unique<segment::ClsFenCi>(platform_.files, platform_.applicationFolder);
    }
    return *state_.fenCi;
}

extract::Cls4Discuz CallObjects::discuz() {
    return {smart(), userNames(), platform_.random};
}

extract::Cls4Article CallObjects::article() {
    return {state_.markers, [this]() -> rewrite::ClsSmart& { return smart(); }};
}

} // namespace kelb::cli
