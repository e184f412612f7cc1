#pragma once

#include "ado/environment.h"
#include "extract/article_markers.h"
#include "extract/user_names.h"
#include "jobs/configuration.h"
#include "jobs/disposal.h"
#include "jobs/page_files.h"
#include "jobs/template_workflow.h"
#include "platform/platform.h"
#include "rewrite/ClsSmart.h"
#include "store/ClsStoreKeeper.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kelb::jobs {

/// The objects that live as long as the program run, each made at its first use and kept. Owned by each program's main
/// and by each test; only jobs and hosts hold a Context&. One that cannot be made (a file is missing) throws
/// platform::FileError and is tried again at the next use.
class Context {
public:
    /// `platform`'s parts outlive the context. A dry run brings an overlay file system and Options::dryRun.
    Context(platform::Platform platform, Configuration configuration, ado::Environment::Options databaseOptions);
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;

    platform::Platform& platform() noexcept { return platform_; }
    const Configuration& configuration() const noexcept { return configuration_; }
    ado::Environment& databases() noexcept { return databases_; }

    /// Reads "ADMarks.txt".
    rewrite::ClsSmart& smart();
    store::ClsStoreKeeper& storeKeeper();
    /// Reads "userNames.txt".
    const extract::UserNames& userNames();
    /// What the set-up dialog of the template extractor leaves for it.
    TemplateWorkflow& templateWorkflow();
    /// Set by the article jobs before each page.
    extract::ArticleMarkers& markers() noexcept { return markers_; }
    PageFiles pageFiles() { return {platform_.files, configuration_.pageEncoding()}; }

    /// Where deleted rows and files go; empty: nowhere. At first [Safety] trash.
    const std::u16string& trashFolder() const noexcept { return trashFolder_; }
    void setTrashFolder(std::u16string_view folder) { trashFolder_ = folder; }
    /// The way to delete of one run of a job.
    std::unique_ptr<Disposal> disposal(std::string_view job);

private:
    platform::Platform platform_;
    Configuration configuration_;
    ado::Environment databases_;
    std::u16string trashFolder_;
    std::optional<rewrite::ClsSmart> smart_;
    std::optional<store::ClsStoreKeeper> storeKeeper_;
    std::optional<extract::UserNames> userNames_;
    std::optional<TemplateWorkflow> templateWorkflow_;
    extract::ArticleMarkers markers_;
};

} // namespace kelb::jobs
