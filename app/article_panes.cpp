#include "app/article_panes.h"

#include "app/qt_text.h"
#include "app/source_row_dialog.h"
#include "app/still_page.h"
#include "app/texts.h"
#include "app/user_dialogs.h"
#include "jobs/database_paths.h"
#include "jobs/published_article.h"

#include <QLabel>
#include <QSplitter>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <exception>
#include <utility>

namespace kelb::app {
namespace {

using Column = jobs::ResultListing::Column;

constexpr int kRestMilliseconds = 150;

/// The site's page of an article: title, where it came from, body.
QString articlePage(jobs::ResultListing& listing, std::size_t row) {
    std::u16string text;
    QString page;
    if (listing.text(row, Column::Title, text)) {
        page += u"<h2>%1</h2>"_qs.arg(toQt(text).toHtmlEscaped());
    }
    QStringList facts;
    for (const Column column : {Column::Time, Column::Url}) {
        if (listing.text(row, column, text) && !text.empty()) {
            facts += toQt(text).toHtmlEscaped();
        }
    }
    page += u"<p><small>%1</small></p>"_qs.arg(facts.join("　"));
    if (listing.text(row, Column::Body, text)) {
        page += toQt(jobs::publishedBody(text));
    }
    return page;
}

QString fieldsPage(const std::vector<jobs::RowField>& fields) {
    QString page = "<table cellpadding=3>";
    for (const jobs::RowField& field : fields) {
        page += u"<tr><th align=left>%1</th><td>%2</td></tr>"_qs.arg(toQt(field.name).toHtmlEscaped(),
                                                                     toQt(field.text).toHtmlEscaped());
    }
    return page + "</table>";
}

} // namespace

ArticlePanes::ArticlePanes(Parts parts, QWidget* parent)
    : QWidget(parent), parts_(std::move(parts)), articleCaption_(*new QLabel), pageCaption_(*new QLabel),
      article_(*new StillPage), page_(*new StillPage), right_(*new QStackedWidget), rows_(parts_.context.databases()) {
    auto* splitter = new QSplitter;
    splitter->setObjectName("ResultsPanes");
    splitter->setChildrenCollapsible(false);
    name(article_, "ResultsArticle", texts::kResultsArticle);
    name(page_, "ResultsSourcePage", texts::kSourcePage);
    right_.addWidget(&page_);
    splitter->addWidget(pane(articleCaption_, article_));
    splitter->addWidget(pane(pageCaption_, right_));
    splitter->setSizes({1'000, 1'000}); // halves
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(splitter);
    rest_.setSingleShot(true);
    rest_.setInterval(kRestMilliseconds);
    connect(&rest_, &QTimer::timeout, this, &ArticlePanes::findSource);
    showNothing();
}

void ArticlePanes::name(StillPage& page, const char* name, const char* text) {
    page.setObjectName(name);
    page.setAccessibleName(texts::shown(text));
    page.setMinimumSize(60, 40);
}

QWidget* ArticlePanes::pane(QLabel& caption, QWidget& page) {
    caption.setTextFormat(Qt::PlainText);
    caption.setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    caption.setBuddy(&page);
    auto* both = new QWidget;
    auto* layout = new QVBoxLayout(both);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(&caption);
    layout->addWidget(&page, 1);
    return both;
}

void ArticlePanes::showNothing() {
    rest_.stop();
    name_ = {};
    found_.reset();
    shown_ = {};
    articleCaption_.setText(texts::shown(texts::kResultsArticle));
    article_.showText(texts::shown(texts::kResultsChoose));
    sourceSays(QString());
}

void ArticlePanes::release() {
    showNothing();
    rows_.close();
}

void ArticlePanes::show(jobs::ResultListing& listing, std::size_t row) {
    showNothing();
    const auto fields = listing.fields(row);
    if (!fields) {
        article_.showText(texts::shown(texts::kResultsGone));
        return;
    }
    const bool hasBody = listing.fieldOf(Column::Body).has_value();
    articleCaption_.setText(texts::shown(hasBody ? texts::kResultsArticle : texts::kResultsFieldsOnly));
    article_.showHtml(hasBody ? articlePage(listing, row) : fieldsPage(*fields), StillPage::Ground::Desktop);
    listing.text(row, Column::Url, name_.url);
    // A job that fills the crawl table itself leaves articles there: such a row is its own source.
    jobs::SourceRow own{listing.database(), listing.table(), *fields};
    if (own.field(u"content") != nullptr) {
        name_.database = listing.database();
        name_.table = listing.table();
        found_ = std::move(own);
    }
    sourceSays(texts::shown(texts::kSourceLooking));
    rest_.start();
}

void ArticlePanes::sourceSays(const QString& text) {
    dropViewer();
    pageCaption_.setText(texts::shown(texts::kSourcePage));
    page_.showText(text);
}

void ArticlePanes::findSource() {
    try {
        if (!found_) {
            if (name_.url.empty()) {
                sourceSays(texts::shown(texts::kSourceNoUrl));
                return;
            }
            name_.database =
                jobs::sourceDatabase(parts_.source(), parts_.context.configuration(), parts_.context.platform().files);
            found_ = rows_.find(name_);
        }
        if (found_) {
            showPage();
        } else {
            sourceSays(texts::shown(texts::kSourceNotFound).arg(toQt(name_.database), toQt(name_.url)));
        }
    } catch (const std::exception& failure) {
        sourceSays(texts::shown(texts::kSourceNoDatabase).arg(QString::fromUtf8(failure.what())));
    }
}

void ArticlePanes::showPage() {
    using State = jobs::SourcePage::State;
    const jobs::RowField* content = found_->field(u"content");
    jobs::PageFiles files = parts_.context.pageFiles();
    shown_ = jobs::sourcePage(content == nullptr ? std::u16string_view() : content->text, parts_.pages(), files);
    switch (shown_.state) {
    case State::File:
    case State::InRow:
        pageCaption_.setText(shown_.state == State::File
                                 ? texts::shown(texts::kSourcePageAt).arg(toQt(shown_.path))
                                 : texts::shown(texts::kSourcePageInRow).arg(toQt(found_->table)));
        page_.showHtml(toQt(shown_.html), StillPage::Ground::White);
        if (whole_) {
            showWhole();
        }
        break;
    case State::NoFile:
        sourceSays(shown_.why.empty() ? texts::shown(texts::kSourceFileGone).arg(toQt(shown_.path))
                                      : texts::shown(texts::kSourceUnreadable).arg(QString::fromStdString(shown_.why)));
        break;
    case State::None:
        sourceSays(texts::shown(texts::kSourceNoContent).arg(toQt(found_->table)));
        break;
    }
}

/// What would be there after a rest is wanted now.
void ArticlePanes::settle() {
    if (rest_.isActive()) {
        rest_.stop();
        findSource();
    }
}

void ArticlePanes::openSourceRow() {
    settle();
    if (found_) {
        showSourceRow(this, *found_);
    } else if (name_.url.empty()) {
        parts_.say(texts::shown(texts::kSourceNoUrl));
    } else if (name_.database.empty()) {
        parts_.dialogs.error(this, texts::shown(texts::kSourcePage), page_.toPlainText());
    } else {
        tellSourceRowGone(this, parts_.dialogs, name_);
    }
}

bool ArticlePanes::setWholePages(bool whole) {
    settle();
    dropViewer();
    whole_ = whole && showWhole();
    return whole_ == whole;
}

/// A page that is no file stays as it is. False when there is no viewer.
bool ArticlePanes::showWhole() {
    dropViewer();
    if (shown_.state != jobs::SourcePage::State::File) {
        return true;
    }
    std::unique_ptr<QWidget> made = parts_.makePageViewer(shown_.path);
    if (made == nullptr) {
        parts_.say(texts::shown(texts::kViewerMissing));
        return false;
    }
    viewer_ = made.release();
    viewer_->setMinimumSize(page_.minimumSize());
    right_.addWidget(viewer_);
    right_.setCurrentWidget(viewer_);
    return true;
}

void ArticlePanes::dropViewer() {
    delete std::exchange(viewer_, nullptr);
}

} // namespace kelb::app
