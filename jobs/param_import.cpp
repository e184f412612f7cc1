#include "jobs/param_import.h"

#include "ado/connection_string.h"
#include "ado/error.h"
#include "extract/ClsSpecSheet.h"
#include "jobs/job_error.h"
#include "jobs/product_pages.h"
#include "jobs/row_reasons.h"
#include "jobs/table_check.h"
#include "platform/clock.h"
#include "platform/file_failures.h"
#include "platform/file_system.h"
#include "platform/path_map.h"
#include "platform/text.h"
#include "platform/utf8.h"

#include <array>

namespace kelb::jobs {

using ado::CursorType;
using ado::LockType;
using extract::ClsSpecSheet;

namespace {

constexpr std::u16string_view kKnowledge = u"wxKnowledge";
constexpr std::u16string_view kTableHeading = u"<th>主体参数</th>";
constexpr std::size_t kShortestTable = 201; ///< characters, and the rest of the page counts
constexpr double kSecondsBetweenKeeping = 1;

/// In the order of the fields param1 to param10.
constexpr std::array<std::u16string_view, 10> kParameters{u"产品定位", u"屏幕尺寸", u"屏幕比例", u"背光灯类型",
                                                          u"网络接口", u"分辨率",   u"输入",     u"输出",
                                                          u"图像特点", u"音频性能"};
constexpr std::array<std::u16string_view, 10> kParameterFields{u"param1", u"param2", u"param3", u"param4", u"param5",
                                                               u"param6", u"param7", u"param8", u"param9", u"param10"};

struct Product {
    std::u16string name, code;
    std::array<std::u16string, kParameters.size()> values; ///< "" for what the page does not tell
};

class ParamImport {
public:
    ParamImport(const ParamImportOptions& options, Context& context, JobHost& host, JobSummary& summary)
        : options_(options), context_(context), host_(host), summary_(summary),
          sink_(chosenSink(options.sink, context.configuration())),
          sourceTable_(options.sourceTable.empty() ? context.configuration().text(Setting::ParamsSourceTable)
                                                   : options.sourceTable),
          dest_(context.databases()), source_(context.databases()) {
        if (options.mode == LoopMode::Folder) {
            folder_ =
                options.folder.empty() ? context.configuration().required(Setting::ParamsShareFolder) : options.folder;
            if (!context.platform().files.folderExists(folder_)) {
                throw platform::notFound("walk over the folder", folder_);
            }
        } else {
            context.configuration().required(Setting::ParamsPortalPath);
        }
        sourcePath_ = options.source;
        if (sourcePath_.empty()) {
            sourcePath_ = platform::joinPath(
                folder_.empty() ? context.configuration().required(Setting::ParamsShareFolder) : folder_, u"Comb.mdb");
        }
    }

    void run() {
        openKnowledge();
        openSource();
        const auto pages = options_.mode == LoopMode::Folder ? pagesOfFolder(folder_, context_, host_)
                                                             : pagesOfRows(sourceRows_, context_, host_);
        walk(*pages);
        keep(*pages);
        pages->finish(summary_);
        knowledge_.Close();
        dest_.Close();
        sourceRows_.Close();
        source_.Close();
        host_.message(kProgramTitle, u"完成了参数的提取");
    }

private:
    void openKnowledge() {
        openSink(dest_, sink_, host_);
        TableCheck check;
        check.need(dest_, sink_.shown, kKnowledge,
                   {u"url", u"TVCode", u"TVName", u"param1", u"param2", u"param3", u"param4", u"param5", u"param6",
                    u"param7", u"param8", u"param9", u"param10"});
        check.finish();
        knowledge_.Open(u"select * from " + std::u16string(kKnowledge), dest_, CursorType::Keyset,
                        LockType::Optimistic);
    }

    /// The crawl table is counted in both modes; a walk over files goes without it.
    void openSource() {
        std::size_t count = 0;
        if (options_.mode == LoopMode::Folder && !context_.platform().files.fileExists(sourcePath_)) {
            host_.warning(u"There is no crawl database " + sourcePath_ + u"; the page files are walked without it.");
        } else {
            source_.mode = ado::Connection::Mode::Read;
            source_.Open(ado::jetConnectionString(sourcePath_));
            TableCheck check;
            check.need(source_, sourcePath_, sourceTable_, {u"url", u"content"});
            check.finish();
            sourceRows_.Open(u"select * from " + sourceTable_ + u" where url like '%" +
                                 platform::quoted(context_.configuration().text(Setting::ParamsPortalPath)) +
                                 u"/product/%/param.shtml%'",
                             source_, CursorType::Keyset, LockType::ReadOnly);
            count = sourceRows_.RecordCount();
            if (options_.mode == LoopMode::Database) {
                summary_.source = {sourcePath_, sourceTable_, u"url"};
            }
        }
        host_.log(u"totalRec: " + platform::number(static_cast<long long>(count)));
    }

    void walk(ProductPages& pages) {
        const platform::Clock& clock = context_.platform().clock;
        double kept = clock.steadySeconds();
        for (std::size_t pass = 1; pass <= options_.mostPasses; ++pass) {
            if (host_.stopRequested()) {
                summary_.stopped = true;
                return;
            }
            host_.yield();
            const ProductPages::State state = pages.next();
            host_.yield();
            if (state == ProductPages::State::WalkEnds) {
                return;
            }
            ++summary_.rows;
            take(pages, state);
            if (const double now = clock.steadySeconds(); now - kept >= kSecondsBetweenKeeping) {
                keep(pages);
                kept = now;
            }
        }
    }

    /// First the rows, then the place behind them.
    void keep(ProductPages& pages) {
        dest_.flush();
        pages.keepPlace();
    }

    void take(const ProductPages& pages, ProductPages::State state) {
        const std::u16string_view table = ClsSpecSheet::extTable(pages.text(), kTableHeading);
        if (table.size() < kShortestTable) {
            host_.showOutcome(u"无法识别! " + now(), summary_.rows, pages.total());
            summary_.skip(state == ProductPages::State::NoMore ? kEndOfFolder
                          : pages.text().empty()               ? kEmptyPage
                                                               : kNoParameterTable,
                          pages.row());
            return;
        }
        host_.showProgress(u"已识别: " + now(), summary_.rows, pages.total());
        const Product product = productOf(pages.text(), table);
        const bool stored = isStored(product.name, pages);
        std::u16string_view message;
        const bool saves = options_.saves();
        if (saves && !stored) {
            add(product, pages);
            message = u"提取到参数，已保存。";
        } else {
            summary_.skip(stored ? kNameAlreadyStored : kSavingIsOff, pages.row());
            message = stored ? u"提取到参数，但没有保存(该参数已存在)。" : u"提取到参数，但没有保存(保存选项未选择)。";
        }
        host_.showOutcome(std::u16string(message) + u" sTVName: " + product.name + u", sTVCode1: " + product.code,
                          summary_.rows, pages.total());
    }

    Product productOf(std::u16string_view page, std::u16string_view table) {
        Product product;
        const std::u16string title = ClsSpecSheet::extTitle(page);
        ClsSpecSheet::extNameAndCode(title, product.name, product.code);
        product.code = context_.smart().searchTVCode(title); // in place of the one in parentheses
        const extract::SpecRows rows(ClsSpecSheet::tableRows(table));
        for (std::size_t i = 0; i < kParameters.size(); ++i) {
            product.values[i] = rows.value(kParameters[i]);
        }
        return product;
    }

    /// Database errors of a page name it.
    template <class Work>
    auto naming(const ProductPages& pages, const Work& work) {
        try {
            return work();
        } catch (const ado::Error& error) {
            throw JobError(std::string(error.what()) + " (Page: " + platform::toUtf8(pages.name()) + ")");
        }
    }

    /// The name is a pattern as it stands, and its apostrophes are not doubled, so that one ends the job. Kept.
    bool isStored(std::u16string_view name, const ProductPages& pages) {
        return naming(pages, [&] {
            ado::Recordset found;
            found.Open(u"select TVName from " + std::u16string(kKnowledge) + u" where TVName like '" +
                           std::u16string(name) + u"'",
                       dest_, CursorType::Keyset, LockType::ReadOnly);
            return !found.Eof();
        });
    }

    void add(const Product& product, const ProductPages& pages) {
        naming(pages, [&] {
            knowledge_.AddNew();
            knowledge_.set(u"url", pages.url());
            knowledge_.set(u"TVCode", product.code);
            knowledge_.set(u"TVName", product.name);
            for (std::size_t i = 0; i < kParameterFields.size(); ++i) {
                knowledge_.set(kParameterFields[i], product.values[i]);
            }
            knowledge_.Update();
        });
        summary_.save(pages.row());
    }

    std::u16string now() const { return platform::show(context_.platform().clock.now()); }

    const ParamImportOptions& options_;
    Context& context_;
    JobHost& host_;
    JobSummary& summary_;
    Sink sink_;
    std::u16string folder_, sourcePath_, sourceTable_;
    ado::Connection dest_, source_; // before the record sets, which are closed first
    ado::Recordset knowledge_, sourceRows_;
};

} // namespace

void importParameters(const ParamImportOptions& options, Context& context, JobHost& host, JobSummary& summary) {
    ParamImport(options, context, host, summary).run();
}

} // namespace kelb::jobs
