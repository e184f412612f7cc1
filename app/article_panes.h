#pragma once

#include "jobs/context.h"
#include "jobs/result_listing.h"
#include "jobs/source_page.h"
#include "jobs/source_row.h"

#include <QTimer>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>
#include <string>

class QLabel;
class QStackedWidget;

namespace kelb::app {

class StillPage;
class UserDialogs;

/// An article as its readers will see it, and beside it the page that it was taken from. The article is there at once,
/// the page when the selection has rested a moment, so that the arrow keys run through a list.
class ArticlePanes final : public QWidget {
public:
    /// What the panes work on; everything outlives them.
    struct Parts {
        jobs::Context& context;
        UserDialogs& dialogs;
        std::function<std::u16string()> source; ///< path of the crawl database; "" leaves the choice to the settings
        std::function<jobs::PageLocation()> pages;
        std::function<void(const QString&)> say;
        /// Makes the page viewer for a page file; nullptr in a program without it.
        std::function<std::unique_ptr<QWidget>(const std::u16string& path)> makePageViewer;
    };
    explicit ArticlePanes(Parts parts, QWidget* parent = nullptr);

    /// Throws ado::Error; nothing is shown then.
    void show(jobs::ResultListing& listing, std::size_t row);
    void showNothing();
    /// Lets go of the crawl database.
    void release();

    void openSourceRow();
    /// Whether page files are shown by the page viewer, with scripts and styles, or as still pages. False when there is
    /// no page viewer.
    bool setWholePages(bool whole);

private:
    bool showWhole();
    void dropViewer();
    static void name(StillPage& page, const char* name, const char* text);
    static QWidget* pane(QLabel& caption, QWidget& page);
    void findSource();
    void findPage();
    void showPage();
    void sourceSays(const QString& text);
    void settle();

    Parts parts_;
    QLabel &articleCaption_, &pageCaption_;
    StillPage &article_, &page_;
    QStackedWidget& right_;     ///< the still page, or over it the viewer
    QWidget* viewer_ = nullptr; ///< a child of right_
    bool whole_ = false;
    QTimer rest_;
    jobs::SourceRows rows_;
    jobs::RowName name_;                   ///< of the crawl row
    std::optional<jobs::SourceRow> found_; ///< the crawl row
    jobs::SourcePage shown_;
};

} // namespace kelb::app
