#include "jobs/template_workflow.h"

#include "ado/connection_string.h"
#include "jobs/table_check.h"
#include "store/table_names.h"

namespace kelb::jobs {
namespace {

std::u16string createStatement(std::u16string_view table) {
    // TEXT without a length and MEMO are the same here; both are in use.
    return u"create table " + std::u16string(table) +
           u" (id int identity(1,1) NOT NULL,url varchar(255),"
           u"recTime datetime,sT varchar(255),sC text,sA text,"
           u"beginPos int,beginStr varchar(255),endPos int,endStr varchar(255), cid int,"
           u"sT1 varchar(255),sC1 Memo,sA1 Memo,sT9 varchar(255),sC9 Memo,sA9 Memo)";
}

} // namespace

TemplateProposals templateProposals(const Configuration& configuration) {
    const std::u16string& folder = configuration.text(Setting::SetupAdultFolder);
    const std::u16string& siteA = configuration.text(Setting::SetupSiteAPrefix);
    const std::u16string& siteB = configuration.text(Setting::SetupSiteBPrefix);
    TemplateProposals proposals{.source = folder + u"\\Comb.mdb",
                                .destination = folder + u"\\Comb2.mdb",
                                .sources = {},
                                .queries = {u"select * from bbsforum ORDER BY url"}};
    proposals.sources = {proposals.source, configuration.text(Setting::SetupAltSource)};
    if (!siteA.empty()) {
        proposals.queries.push_back(u"select * from bbsforum where url like '" + siteA + u"%' ORDER BY url");
    }
    if (!siteB.empty()) {
        proposals.queries.push_back(u"select top 200 * from bbsforum where url like '" + siteB + u"%' ORDER BY url");
        proposals.queries.push_back(u"select * from bbsforum where url like '" + siteB +
                                    u"/html/%-%.htm' ORDER BY url");
    }
    return proposals;
}

void TemplateWorkflow::open(const TemplateChoice& choice) {
    close();
    query_ = choice.query;
    try {
        openSource(choice.source);
        openDestination(choice);
        chosen_ = choice;
        chosen_->destination = sDestDbPath_;
    } catch (...) {
        close();
        throw;
    }
}

void TemplateWorkflow::openSource(const std::u16string& path) {
    source_.Open(ado::jetConnectionString(path));
    TableCheck check;
    check.need(source_, path, kTemplateSourceTable, {u"url", u"content"});
    check.finish();
    rsSource_.Open(u"select * from " + std::u16string(kTemplateSourceTable), source_, ado::CursorType::Keyset,
                   ado::LockType::ReadOnly);
}

void TemplateWorkflow::openDestination(const TemplateChoice& choice) {
    const std::u16string connection = ado::jetConnectionString(choice.destination);
    sDestDbPath_ = ado::ConnectionString(connection).value(u"Data Source");
    destination_.mode = ado::Connection::Mode::Write;
    destination_.Open(connection);
    if (!tableExists(choice.destinationTable, destination_)) {
        destination_.Execute(createStatement(choice.destinationTable));
        destination_.flush();
    }
    TableCheck check;
    check.need(destination_, sDestDbPath_, choice.destinationTable,
               {u"url", u"cid", u"sT", u"sC", u"beginPos", u"beginStr", u"recTime"});
    check.finish();
    rsDest_.Open(u"select * from " + choice.destinationTable, destination_, ado::CursorType::Keyset,
                 ado::LockType::Optimistic);
}

void TemplateWorkflow::close() {
    rsDest_.Close();
    rsSource_.Close();
    destination_.Close();
    source_.Close();
}

bool TemplateWorkflow::isOpen() const {
    return rsSource_.State() == ado::ObjectState::Open && rsDest_.State() == ado::ObjectState::Open;
}

bool tableExists(std::u16string_view sTable, ado::Connection& conn) {
    return store::tableExists(sTable, conn);
}

} // namespace kelb::jobs
