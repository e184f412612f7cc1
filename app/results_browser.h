#pragma once

#include "app/article_panes.h"
#include "app/results_model.h"
#include "jobs/result_filter.h"

#include <QTimer>
#include <QWidget>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QCheckBox;
class QComboBox;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPushButton;

namespace kelb::app {

class JobContexts;
class PathField;
class ResultsList;
class UserDialogs;

/// The tab "结果": a destination table as its readers will see it, article by article. The database is open for reading
/// while the tab is on screen, and let go when another tab comes in front. No error leaves a slot: it is told in the
/// tab itself.
class ResultsBrowser final : public QWidget {
public:
    /// What the tab works on; everything outlives it.
    struct Parts {
        JobContexts& contexts;
        UserDialogs& dialogs;
        std::function<std::u16string()> destination; ///< `Text3`: shown while the tab's own field is empty
        std::function<std::u16string()> source;      ///< the crawl database; "" leaves the choice to the settings
        std::function<jobs::PageLocation()> pages;
        std::function<QString()> busy; ///< why nothing can be changed now, "" when it can
        std::function<bool()> dryRun;
        std::function<void(const QString&)> say; ///< in the status line
        /// Makes the page viewer for a page file; nullptr in a program without it.
        std::function<std::unique_ptr<QWidget>(const std::u16string& path)> makePageViewer;
    };
    explicit ResultsBrowser(Parts parts);
    ~ResultsBrowser() override;

    /// Rows that can be marked at once.
    static constexpr std::size_t kMostMarked = 100'000;

    /// Opens the database and its table anew (F5). The chosen row stays chosen if it is still where it was.
    void refresh();
    /// Sets blnPass of the chosen rows.
    void mark(bool pass);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QHBoxLayout* databaseLine();
    QHBoxLayout* filterLine();
    QHBoxLayout* buttonLine();
    QPushButton& button(QHBoxLayout& line, const char* name, const char* caption, const char* toolTip,
                        const std::function<void()>& pressed);
    void makeList();
    void makeShortcuts();
    void release();
    std::u16string wantedPath() const;
    void openDatabase();
    void openTable();
    void listingCame();
    void tell(const QString& trouble);
    void showCounts();
    void filterChanged();
    void lookOn();
    void watchJob();
    void sort(int column);
    void showCurrent();
    bool mayMark();
    void markLines(const std::vector<int>& lines, bool pass);

    Parts parts_;
    PathField& path_;
    QComboBox& tables_;
    QLineEdit& filterText_;
    QCheckBox& bodies_;
    QLabel &counts_, &trouble_;
    ResultsModel model_;
    ResultsList& list_;
    ArticlePanes& panes_;
    QTimer slice_, watch_;
    bool jobRan_ = false;
    std::u16string opened_; ///< path of the database whose tables are listed
    std::optional<jobs::ResultListing::Order> order_;
    std::unique_ptr<jobs::ResultListing> listing_;
    std::unique_ptr<jobs::ResultFilter> filter_;
};

} // namespace kelb::app
