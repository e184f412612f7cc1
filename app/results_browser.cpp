#include "app/results_browser.h"

#include "app/job_contexts.h"
#include "app/path_field.h"
#include "app/qt_text.h"
#include "app/results_list.h"
#include "app/texts.h"
#include "app/user_dialogs.h"

#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QHideEvent>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QShortcut>
#include <QShowEvent>
#include <QSignalBlocker>
#include <QSplitter>
#include <QVBoxLayout>

#include <algorithm>
#include <exception>
#include <utility>

namespace kelb::app {
namespace {

using Column = jobs::ResultListing::Column;

/// A turn of the filter: short enough for keys and paint to come through. Beside a job it takes less of the time.
constexpr qint64 kSlice = 12;      // milliseconds
constexpr qint64 kSliceInJob = 4;  // milliseconds
constexpr std::size_t kStep = 128; // rows between two looks at the clock
constexpr int kWatchMilliseconds = 1'000;

constexpr const char16_t* kUsualTable = u"wxAll";

class WaitCursor {
public:
    WaitCursor() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QGuiApplication::restoreOverrideCursor(); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;
};

void explain(QWidget& widget, const char* name, const char* accessibleName, const char* toolTip) {
    widget.setObjectName(name);
    widget.setAccessibleName(texts::shown(accessibleName).remove(QRegularExpression(R"(\(&.\))")));
    widget.setAccessibleDescription(texts::shown(toolTip));
    widget.setToolTip(u"<qt>%1</qt>"_qs.arg(texts::shown(toolTip).toHtmlEscaped()));
}

QLabel* captionFor(QWidget& field, const char* text) {
    auto* caption = new QLabel(texts::shown(text));
    caption->setBuddy(&field);
    return caption;
}

} // namespace

ResultsBrowser::ResultsBrowser(Parts parts)
    : parts_(std::move(parts)), path_(*new PathField), tables_(*new QComboBox), filterText_(*new QLineEdit),
      bodies_(*new QCheckBox(texts::shown(texts::kResultsBodies))), counts_(*new QLabel), trouble_(*new QLabel),
      model_(nullptr,
             [this](int line, bool pass) {
                 if (mayMark()) {
                     markLines({line}, pass);
                 }
             }),
      list_(*new ResultsList(model_)), panes_(*new ArticlePanes({.context = parts_.contexts.program(),
                                                                 .dialogs = parts_.dialogs,
                                                                 .source = parts_.source,
                                                                 .pages = parts_.pages,
                                                                 .say = parts_.say,
                                                                 .makePageViewer = parts_.makePageViewer})) {
    setObjectName("TabResults");
    makeList();
    trouble_.setObjectName("ResultsTrouble");
    trouble_.setTextFormat(Qt::PlainText);
    trouble_.setWordWrap(true);
    trouble_.setTextInteractionFlags(Qt::TextSelectableByMouse);
    trouble_.hide();
    auto* splitter = new QSplitter(Qt::Vertical);
    splitter->setObjectName("ResultsSplitter");
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(&list_);
    splitter->addWidget(&panes_);
    splitter->setSizes({260, 340});
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(databaseLine());
    layout->addLayout(filterLine());
    layout->addWidget(&trouble_);
    layout->addWidget(splitter, 1);
    layout->addLayout(buttonLine());
    makeShortcuts();
    slice_.setInterval(0);
    connect(&slice_, &QTimer::timeout, this, &ResultsBrowser::lookOn);
    watch_.setInterval(kWatchMilliseconds);
    connect(&watch_, &QTimer::timeout, this, &ResultsBrowser::watchJob);
}

ResultsBrowser::~ResultsBrowser() {
    list_.setModel(nullptr); // the view is a child and goes after the model
}

QHBoxLayout* ResultsBrowser::databaseLine() {
    explain(path_, "ResultsPath", texts::kResultsDatabaseName, texts::kResultsDatabaseTip);
    explain(tables_, "ResultsTables", texts::kResultsTable, texts::kResultsTableTip);
    tables_.setMinimumContentsLength(8);
    tables_.setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    auto* line = new QHBoxLayout;
    line->addWidget(captionFor(path_, texts::kResultsDatabase));
    line->addWidget(&path_, 1);
    auto& browse = button(*line, "ResultsBrowse", texts::kBrowse, texts::kResultsDatabaseTip, [this] {
        const QString path = parts_.dialogs.openFile(this, texts::shown(texts::kChooseDestination), path_.text(),
                                                     texts::shown(texts::kDatabaseFilter));
        if (!path.isEmpty()) {
            path_.setChosen(path);
        }
    });
    browse.setAccessibleName(texts::shown(texts::kChooseDestination));
    line->addWidget(captionFor(tables_, texts::kResultsTable));
    line->addWidget(&tables_);
    button(*line, "ResultsRefresh", texts::kResultsRefresh, texts::kResultsRefreshTip, [this] { refresh(); });
    connect(&path_, &QLineEdit::editingFinished, this, [this] {
        if (isVisible() && wantedPath() != opened_) { // not only left
            refresh();
        }
    });
    connect(&path_, &QLineEdit::returnPressed, this, &ResultsBrowser::refresh); // also to try once more
    connect(&tables_, &QComboBox::currentIndexChanged, this, [this] {
        order_.reset();
        openTable();
    });
    return line;
}

QHBoxLayout* ResultsBrowser::filterLine() {
    explain(filterText_, "ResultsFilter", texts::kResultsFilter, texts::kResultsFilterHint);
    filterText_.setPlaceholderText(texts::shown(texts::kResultsFilterHint));
    filterText_.setClearButtonEnabled(true);
    explain(bodies_, "ResultsBodies", texts::kResultsBodies, texts::kResultsBodiesTip);
    counts_.setObjectName("ResultsCounts");
    counts_.setTextFormat(Qt::PlainText);
    auto* line = new QHBoxLayout;
    line->addWidget(captionFor(filterText_, texts::kResultsFilter));
    line->addWidget(&filterText_, 1);
    line->addWidget(&bodies_);
    line->addWidget(&counts_);
    connect(&filterText_, &QLineEdit::textChanged, this, &ResultsBrowser::filterChanged);
    connect(&filterText_, &QLineEdit::returnPressed, this, [this] { list_.setFocus(); });
    connect(&bodies_, &QCheckBox::toggled, this, &ResultsBrowser::filterChanged);
    return line;
}

QHBoxLayout* ResultsBrowser::buttonLine() {
    auto* line = new QHBoxLayout;
    button(*line, "ResultsPass", texts::kResultsPass, texts::kResultsPassTip, [this] { mark(true); });
    button(*line, "ResultsFail", texts::kResultsFail, texts::kResultsFailTip, [this] { mark(false); });
    line->addStretch(1);
    button(*line, "ResultsSourceRow", texts::kResultsSourceRow, texts::kResultsSourceRowTip,
           [this] { panes_.openSourceRow(); });
    auto& whole = button(*line, "ResultsViewer", texts::kResultsViewer, texts::kResultsViewerTip, [] {});
    whole.setCheckable(true);
    connect(&whole, &QPushButton::toggled, this, [this, &whole](bool on) {
        if (!panes_.setWholePages(on)) {
            whole.setChecked(false);
        }
    });
    return line;
}

QPushButton& ResultsBrowser::button(QHBoxLayout& line, const char* name, const char* caption, const char* toolTip,
                                    const std::function<void()>& pressed) {
    auto* made = new QPushButton(texts::shown(caption));
    explain(*made, name, caption, toolTip);
    made->setAutoDefault(false);
    connect(made, &QPushButton::clicked, this, pressed);
    line.addWidget(made);
    return *made;
}

void ResultsBrowser::makeList() {
    explain(list_, "ResultsList", texts::kResultsList, texts::kResultsListTip);
    list_.setToolTip({}); // it would hide the tooltips of the lines
    connect(list_.horizontalHeader(), &QHeaderView::sectionClicked, this, &ResultsBrowser::sort);
    connect(list_.selectionModel(), &QItemSelectionModel::currentRowChanged, this, &ResultsBrowser::showCurrent);
    connect(&list_, &QTableView::doubleClicked, this, [this] { panes_.openSourceRow(); });
}

void ResultsBrowser::makeShortcuts() {
    const auto key = [this](const QKeySequence& keys, QWidget& where, const std::function<void()>& act) {
        auto* shortcut = new QShortcut(keys, &where);
        // A key of the tab counts wherever the focus is, as long as the tab is on screen.
        shortcut->setContext(&where == this ? Qt::WindowShortcut : Qt::WidgetShortcut);
        connect(shortcut, &QShortcut::activated, this, act);
    };
    key(Qt::Key_F5, *this, [this] { refresh(); });
    key(QKeySequence::Find, *this, [this] {
        filterText_.setFocus();
        filterText_.selectAll();
    });
    key(Qt::Key_Space, list_, [this] { mark(!model_.passed(list_.currentIndex().row())); });
    for (const Qt::Key enter : {Qt::Key_Return, Qt::Key_Enter}) {
        key(enter, list_, [this] { panes_.openSourceRow(); });
    }
}

void ResultsBrowser::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!event->spontaneous() && listing_ == nullptr) {
        refresh();
    }
}

void ResultsBrowser::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    if (!event->spontaneous()) { // another tab, not another desktop
        release();
    }
}

/// Lets go of the databases: other programs may write them again.
void ResultsBrowser::release() {
    slice_.stop();
    watch_.stop();
    jobRan_ = false;
    model_.show(nullptr);
    filter_.reset();
    listing_.reset();
    panes_.release();
}

void ResultsBrowser::refresh() {
    const int line = list_.currentIndex().row();
    std::optional<std::uint32_t> place;
    try {
        if (line >= 0 && listing_ != nullptr) {
            place = listing_->place(model_.rowOf(line));
        }
    } catch (const std::exception&) { // the row cannot be read, so there is nothing to come back to
        place.reset();
    }
    release();
    openDatabase();
    if (place && listing_ != nullptr && line < model_.rowCount() && listing_->place(model_.rowOf(line)) == place) {
        list_.selectRow(line);
    }
}

std::u16string ResultsBrowser::wantedPath() const {
    return path_.text().isEmpty() ? parts_.destination() : fromQt(path_.text());
}

void ResultsBrowser::openDatabase() {
    path_.setPlaceholderText(toQt(parts_.destination()));
    opened_ = wantedPath();
    const QString before = tables_.currentText();
    {
        const QSignalBlocker quiet(tables_);
        tables_.clear();
        try {
            for (const std::u16string& table : jobs::tablesOf(parts_.contexts.program().databases(), opened_)) {
                tables_.addItem(toQt(table));
            }
        } catch (const std::exception& failure) {
            tell(texts::shown(texts::kResultsCannotOpen).arg(QString::fromUtf8(failure.what())));
            return;
        }
        const int again = tables_.findText(before, Qt::MatchFixedString);
        const int usual = tables_.findText(QString::fromUtf16(kUsualTable), Qt::MatchFixedString);
        tables_.setCurrentIndex(again >= 0 ? again : std::max(usual, 0));
    }
    if (tables_.count() == 0) {
        tell(texts::shown(texts::kResultsNoTable).arg(toQt(opened_)));
        return;
    }
    openTable();
}

void ResultsBrowser::openTable() {
    release();
    if (tables_.currentIndex() < 0 || !isVisible()) {
        return;
    }
    const std::u16string table = fromQt(tables_.currentText());
    ado::Environment& databases = parts_.contexts.program().databases();
    tell({});
    const WaitCursor wait; // the rows of a long table are counted
    try {
        listing_ = std::make_unique<jobs::ResultListing>(databases, opened_, table, order_);
        listing_->count();
    } catch (const std::exception& failure) {
        listing_.reset();
        order_.reset(); // which may have been the trouble
        tell(texts::shown(texts::kResultsCannotOpen).arg(QString::fromUtf8(failure.what())));
        return;
    }
    listingCame();
}

void ResultsBrowser::listingCame() {
    model_.show(listing_.get());
    list_.fit(*listing_);
    list_.showOrder(order_);
    watch_.start();
    filterChanged();
}

void ResultsBrowser::tell(const QString& trouble) {
    trouble_.setText(trouble);
    trouble_.setVisible(!trouble.isEmpty());
    showCounts();
}

void ResultsBrowser::showCounts() {
    if (listing_ == nullptr) {
        counts_.clear();
    } else if (filter_ == nullptr) {
        counts_.setText(texts::shown(texts::kResultsCount).arg(listing_->count()));
    } else if (filter_->finished()) {
        counts_.setText(texts::shown(texts::kResultsMatches).arg(filter_->matches().size()).arg(filter_->total()));
    } else {
        const std::size_t percent = filter_->looked() * 100 / std::max<std::size_t>(filter_->total(), 1);
        counts_.setText(texts::shown(texts::kResultsLooking).arg(filter_->matches().size()).arg(percent));
    }
}

void ResultsBrowser::filterChanged() {
    if (listing_ == nullptr) {
        return;
    }
    const std::u16string text = fromQt(filterText_.text());
    list_.setCurrentIndex({});
    if (text.empty()) {
        slice_.stop();
        model_.choose(nullptr);
        filter_.reset();
    } else {
        if (filter_ == nullptr) {
            filter_ = std::make_unique<jobs::ResultFilter>(*listing_);
        }
        model_.chooseNone();
        filter_->look(text,
                      bodies_.isChecked() ? jobs::ResultFilter::Bodies::Searched : jobs::ResultFilter::Bodies::Passed);
        model_.choose(&filter_->matches());
        slice_.start();
    }
    showCounts();
    showCurrent();
}

void ResultsBrowser::lookOn() {
    QElapsedTimer time;
    time.start();
    const qint64 slice = parts_.busy().isEmpty() ? kSlice : kSliceInJob;
    try {
        while (!filter_->finished() && time.elapsed() < slice) {
            filter_->step(kStep);
        }
    } catch (const std::exception& failure) {
        slice_.stop();
        tell(texts::shown(texts::kResultsCannotOpen).arg(QString::fromUtf8(failure.what())));
    }
    model_.grow();
    if (filter_->finished()) {
        slice_.stop();
    }
    showCounts();
}

/// A job may change and delete what is on screen. When it has ended its database need not be open for writing.
void ResultsBrowser::watchJob() {
    const bool runs = !parts_.busy().isEmpty();
    if (runs) {
        model_.readAgain();
    } else if (jobRan_) {
        try {
            parts_.contexts.program().databases().leaveToReaders(opened_);
        } catch (const std::exception& failure) {
            tell(texts::shown(texts::kResultsCannotOpen).arg(QString::fromUtf8(failure.what())));
        }
        model_.readAgain();
    }
    jobRan_ = runs;
}

void ResultsBrowser::sort(int column) {
    const auto by = ResultsList::sortedBy(column);
    if (!by || listing_ == nullptr) {
        return;
    }
    if (listing_->count() > jobs::ResultListing::kMostSorted) {
        parts_.say(texts::shown(texts::kResultsTooManyToSort).arg(jobs::ResultListing::kMostSorted));
        return;
    }
    const bool again = order_ && order_->column == *by;
    order_ = {*by, again && !order_->descending};
    openTable();
}

void ResultsBrowser::showCurrent() {
    const int line = list_.currentIndex().row();
    if (listing_ == nullptr || line < 0) {
        panes_.showNothing();
        return;
    }
    try {
        panes_.show(*listing_, model_.rowOf(line));
    } catch (const std::exception& failure) {
        panes_.showNothing();
        tell(texts::shown(texts::kResultsCannotOpen).arg(QString::fromUtf8(failure.what())));
    }
}

/// Otherwise says why not.
bool ResultsBrowser::mayMark() {
    if (const QString why = parts_.busy(); !why.isEmpty()) {
        parts_.say(why);
        return false;
    }
    if (parts_.dryRun()) {
        parts_.say(texts::shown(texts::kResultsDryRun));
        return false;
    }
    return true;
}

void ResultsBrowser::mark(bool pass) {
    if (listing_ == nullptr || !mayMark()) {
        return;
    }
    const std::vector<int> lines = list_.chosenLines(kMostMarked);
    if (lines.empty()) {
        parts_.say(texts::shown(texts::kResultsNothingChosen));
    } else if (lines.size() > kMostMarked) {
        parts_.say(texts::shown(texts::kResultsTooMany).arg(kMostMarked));
    } else {
        markLines(lines, pass);
    }
}

void ResultsBrowser::markLines(const std::vector<int>& lines, bool pass) {
    if (!listing_->hasPass() &&
        !parts_.dialogs.confirm(this, texts::shown(texts::kConfirmTitle),
                                texts::shown(texts::kResultsAddPass).arg(toQt(listing_->table())))) {
        return;
    }
    std::vector<std::size_t> rows;
    rows.reserve(lines.size());
    std::ranges::transform(lines, std::back_inserter(rows), [this](int line) { return model_.rowOf(line); });
    const bool adds = !listing_->hasPass();
    const WaitCursor wait; // up to a hundred thousand rows
    try {
        if (adds && !listing_->addPass(rows)) {
            parts_.say(texts::shown(texts::kResultsMoved));
        } else {
            parts_.say(texts::shown(texts::kResultsMarked).arg(listing_->setPass(rows, pass)));
        }
    } catch (const std::exception& failure) {
        parts_.dialogs.error(this, texts::shown(texts::kErrorTitle), QString::fromUtf8(failure.what()));
    }
    if (adds) {
        refresh();
    } else {
        model_.readAgain();
    }
}

} // namespace kelb::app
