#include "jobs/fault_merge.h"

#include "ado/connection_string.h"
#include "jobs/row_loop.h"
#include "jobs/row_reasons.h"
#include "jobs/table_check.h"
#include "platform/text.h"

namespace kelb::jobs {
namespace {

std::u16string databaseOf(const FaultMergeOptions& options, const Configuration& configuration) {
    return options.database.empty()
               ? u"D:\\KelbFolder\\Comb(" + configuration.required(Setting::MergeSiteLabel) + u"1).mdb"
               : options.database;
}

class FaultMerge {
public:
    FaultMerge(const FaultMergeOptions& options, std::u16string table, Context& context, JobHost& host,
               JobSummary& summary)
        : configuration_(context.configuration()), host_(host), summary_(summary), table_(std::move(table)),
          candidates_(u"select * from " + table_ + u" where url like '%" +
                      platform::quoted(configuration_.required(Setting::MergeSiteFragment)) +
                      u"%' and blnPass=true and TVCode<>''"),
          path_(databaseOf(options, configuration_)), database_(context.databases()) {}

    void run() {
        open();
        records_.Open(candidates_ + u" and blnJoined=false", database_, ado::CursorType::Keyset,
                      ado::LockType::Optimistic);
        total_ = records_.RecordCount();
        summary_.source = {path_, table_, u"url"};
        walkRows({.rows = records_,
                  .connections = {&database_},
                  .countLine = RowWalk::CountLine::None,
                  .stop = RowWalk::Stop::Ignored,
                  .label = RowWalk::Label::Own},
                 host_, summary_, [this](std::size_t i) { mergeRecord(i); });
        records_.Close();
        database_.Close();
        // The counter of a loop stands one behind the last row that it visited. Kept.
        host_.message(kProgramTitle, u"000" + platform::number(static_cast<long long>(summary_.rows) + 1));
    }

private:
    void open() {
        database_.mode = ado::Connection::Mode::Write;
        database_.Open(ado::jetConnectionString(path_));
        TableCheck check;
        check.need(database_, path_, table_, {u"id", u"url", u"sT", u"sC", u"TVCode", u"blnPass"});
        check.finish();
        ado::Recordset fields;
        fields.Open(candidates_, database_, ado::CursorType::Keyset, ado::LockType::Optimistic);
        const bool canJoin = fields.hasField(u"blnJoined");
        fields.Close();
        if (!canJoin) {
            database_.Execute(u"ALTER TABLE " + table_ + u" ADD blnJoined YESNO");
            // The box names another column than the one that was made, and the merge runs on although it asks to start
            // again. Kept.
            host_.message(kProgramTitle, u"没有Field: TVCode,已创建，请重新开始");
            host_.closeWindow();
        }
    }

    void mergeRecord(std::size_t i) {
        if (ado::toInteger(records_.value(u"blnPass")).value_or(0) == 0) {
            summary_.skip(kWithdrawn, url()); // as the partner of an earlier record of this run
            return;
        }
        // What is shown is the query of the record before. Kept.
        host_.showProgress(u"查询：" + query_, i, total_);
        host_.yield();
        const std::u16string code = records_.text(u"TVCode");
        // The code goes in as it stands: one with an apostrophe ends the job with the database's error. Kept.
        query_ = u"select * from " + table_ + u" where blnPass=true and TVCode='" + code + u"' and id<>" +
                 records_.text(u"id") + u" and blnJoined=false";
        ado::Recordset partner;
        partner.Open(query_, database_, ado::CursorType::Keyset, ado::LockType::Optimistic);
        if (partner.Eof()) {
            summary_.skip(kNoPartner, url());
            return;
        }
        merge(partner, code);
        summary_.save(url());
    }

    std::u16string url() { return records_.text(u"url"); }

    void merge(ado::Recordset& partner, const std::u16string& code) {
        std::u16string text = u"故障一：" + records_.text(u"sT") + u"<br>\r\n" + records_.text(u"sC") + u"<P>\r\n";
        text += u"故障二：" + partner.text(u"sT") + u"<br>\r\n" + partner.text(u"sC");
        records_.set(u"sC", std::move(text));
        records_.set(u"sT", configuration_.text(Setting::MergeBrandLabel) + code + u"的故障总结");
        records_.set(u"blnJoined", ado::Value(true));
        partner.set(u"blnPass", ado::Value(false));
        // A kill must not leave a partner withdrawn whose text is nowhere.
        database_.atomically([&] {
            partner.Update();
            records_.Update();
        });
    }

    const Configuration& configuration_;
    JobHost& host_;
    JobSummary& summary_;
    std::u16string table_;
    std::u16string candidates_; ///< the query for approved records of the site with a set code
    std::u16string path_;
    ado::Connection database_; // before the record set, which is closed first
    ado::Recordset records_;
    std::size_t total_ = 0; // records, for the progress
    std::u16string query_;  ///< for the partner; held from record to record
};

} // namespace

void mergeFaults(const FaultMergeOptions& options, Context& context, JobHost& host, JobSummary& summary) {
    std::u16string table = options.table ? *options.table : context.configuration().text(Setting::MergeTable);
    if (table.empty()) {
        summary.note = "no table is named: nothing was merged";
        return;
    }
    FaultMerge(options, std::move(table), context, host, summary).run();
}

} // namespace kelb::jobs
