#pragma once

#include "ado/connection.h"
#include "ado/recordset.h"
#include "extract/ClsWebExtractor.h"
#include "extract/template_model.h"
#include "platform/clock.h"
#include "platform/ui_pump.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace kelb::extract {

/// What became of a source row.
enum class TemplateRow {
    NoPageFile, ///< no file, or no body in it
    TooShort,   ///< fewer than 100 characters are left of it
    WarmUp,     ///< learned from, not saved
    Rewound,    ///< ended the warm-up: the source starts again, and this row is not saved
    TooLong,    ///< 8,000 characters and more
    Saved
};

/// The window of the template extractor as its logic sees it.
class ExtractorView : public platform::UiPump {
public:
    virtual void showModel(const TemplateModel& model) = 0; ///< `Text2` and `Text3`
    virtual void showHits(const Alignment& alignment) = 0;  ///< how the last page fits the model
    virtual void showPath(std::u16string_view path) = 0;    ///< `Text5`
    virtual void showBody(std::u16string_view body) = 0;    ///< `Text1`
    virtual void showResult(std::u16string_view text) = 0;  ///< `Label2`
    virtual void showPhase(std::u16string_view text) = 0;   ///< `Label1`
    /// After each row, whatever became of it. `url`: its address.
    virtual void rowDone(TemplateRow row, std::u16string_view url) = 0;
    virtual bool interrupted() = 0;        ///< `Check1`
    virtual bool slow() = 0;               ///< `Check2`
    virtual void switchTimer(bool on) = 0; ///< `Timer1`
    virtual void message(std::u16string_view title, std::u16string_view text) = 0;
};

/// The template extractor: pages of sites that nobody wrote markers for. It learns from the first 105 long pages which
/// lines are boilerplate, then starts the source again and saves what is left of each page. The counters and what was
/// learned live as long as the object.
///
/// Errors of databases and files go through every operation; an edit of the destination is then dropped, and the
/// object can be used further.
class FrmExtractor {
public:
    /// Everything outlives the object; both record sets are open.
    struct Parts {
        ado::Recordset& rsSource;
        ado::Recordset& rsDest;
        ado::Connection& destination; ///< of rsDest: its changes are brought to the disk when they are due
        /// Reads a page file whole; false, and "", when there is none at the path.
        std::function<bool(std::u16string_view path, std::u16string& page)> readPage;
        const platform::Clock& clock;
        std::u16string siteName; ///< the operator's own
    };
    FrmExtractor(Parts parts, ExtractorView& view);

    /// Reads and shows the model page. False, after a message, when it is empty: the window then closes.
    /// Throws platform::FileError when it is not there.
    bool readModel(std::u16string_view path);

    /// Works on the current source row and moves to the next. Returns the length of the body, -1 for a row that the
    /// warm-up took. Requires a current row.
    std::int32_t extContent();

    void CmdNxt_Click();   ///< "下一篇": one row; nothing at the end
    void Command5_Click(); ///< "上一篇": two rows back, since the last row was left already; stops at the first row
    void Command1_Click(); ///< "连续提取": up to as many rows as the source has, or starts the timer
    void Timer1_Timer();   ///< slow mode: on to the next long article

    bool atEnd() const { return parts_.rsSource.Eof(); }
    /// Long pages so far. One more than kWarmUpPages starts the source again, and those behind it are saved.
    std::int32_t longPages() const noexcept { return longPages_; }

    static constexpr std::int32_t kWarmUpPages = 105;

private:
    TemplateRow extractRow();
    TemplateRow useBody(std::u16string_view url);
    void save(std::u16string_view url);
    void readBody(std::u16string_view path);
    void runTick();

    Parts parts_;
    ExtractorView& view_;
    std::unique_ptr<const TemplateModel> model_ = std::make_unique<const TemplateModel>();
    ClsWebExtractor extractor_;
    std::int32_t longPages_ = 0;
    bool ticking_ = false;
    std::u16string url_, page_, title_, content_; ///< of the current row
};

} // namespace kelb::extract
