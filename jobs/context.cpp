#include "jobs/context.h"

#include "platform/file_system.h"

namespace kelb::jobs {

Context::Context(platform::Platform platform, Configuration configuration, ado::Environment::Options databaseOptions)
    : platform_(std::move(platform)), configuration_(std::move(configuration)), databases_(platform_, databaseOptions),
      trashFolder_(configuration_.text(Setting::SafetyTrash)) {}

rewrite::ClsSmart& Context::smart() {
    return smart_ ? *smart_ : smart_.emplace(platform_.files, platform_.applicationFolder);
}

store::ClsStoreKeeper& Context::storeKeeper() {
    return storeKeeper_ ? *storeKeeper_ : storeKeeper_.emplace(platform_, databases_);
}

const extract::UserNames& Context::userNames() {
    return userNames_ ? *userNames_
                      : userNames_.emplace(extract::UserNames::read(platform_.files, platform_.applicationFolder));
}

std::unique_ptr<Disposal> Context::disposal(std::string_view job) {
    return trashFolder_.empty() ? makeDeletion(platform_) : makeTrash(platform_, trashFolder_, job);
}

TemplateWorkflow& Context::templateWorkflow() {
    return templateWorkflow_ ? *templateWorkflow_ : templateWorkflow_.emplace(databases_);
}

} // namespace kelb::jobs
