#pragma once

#include "ado/connection.h"
#include "ado/recordset.h"
#include "jobs/configuration.h"
#include "platform/file_system.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::jobs {

inline constexpr std::u16string_view kTemplateSourceTable = u"bbsforum"; ///< whatever the dialog shows

/// What the set-up dialog of the template extractor proposes.
struct TemplateProposals {
    std::u16string source;               ///< data folder + "\Comb.mdb"
    std::u16string destination;          ///< data folder + "\Comb2.mdb"
    std::vector<std::u16string> sources; ///< the source and the alternative
    std::vector<std::u16string> queries; ///< those whose site is not set are left out
};
[[nodiscard]] TemplateProposals templateProposals(const Configuration& configuration);

/// What is chosen there.
struct TemplateChoice {
    std::u16string source;                   ///< path of the crawl database
    std::u16string destination;              ///< path, with or without the provider's prefix
    std::u16string destinationTable;         ///< made when it is missing
    std::u16string query = std::u16string(); ///< kept, but not used: the whole source table is opened. Kept
};

/// The program-wide state of the template workflow: made by the set-up dialog, worked on by the extractor.
class TemplateWorkflow {
public:
    explicit TemplateWorkflow(ado::Environment& databases) : source_(databases), destination_(databases) {}

    /// Closes what was open and opens both record sets. Throws ado::Error, JobError (columns missing); everything is
    /// closed then.
    void open(const TemplateChoice& choice);
    void close();
    bool isOpen() const;

    /// What was opened last, its destination a bare path; stays when it is closed, for the jobs that work on the same
    /// databases. No value before the first time.
    const std::optional<TemplateChoice>& chosen() const noexcept { return chosen_; }

    ado::Recordset& rsSource() noexcept { return rsSource_; }
    ado::Recordset& rsDest() noexcept { return rsDest_; }
    ado::Connection& destination() noexcept { return destination_; }
    const std::u16string& sDestDbPath() const noexcept { return sDestDbPath_; } ///< a bare path
    const std::u16string& query() const noexcept { return query_; }

private:
    void openSource(const std::u16string& path);
    void openDestination(const TemplateChoice& choice);

    ado::Connection source_, destination_; // before the record sets, which are closed first
    ado::Recordset rsSource_, rsDest_;
    std::u16string sDestDbPath_, query_;
    std::optional<TemplateChoice> chosen_;
};

/// Whether the database has a table of exactly this name.
[[nodiscard]] bool tableExists(std::u16string_view sTable, ado::Connection& conn);

} // namespace kelb::jobs
