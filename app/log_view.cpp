#include "app/log_view.h"

#include "app/qt_text.h"

#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>

#include <algorithm>

namespace kelb::app {
namespace {

constexpr int kRefreshMs = 100;
constexpr int kViewLines = 2'000;
/// One entry may be a whole page; a line of that length would take seconds to lay out.
constexpr std::size_t kViewEntryUnits = 10'000;

} // namespace

LogView::LogView(QWidget* parent) : QPlainTextEdit(parent) {
    setReadOnly(true);
    setUndoRedoEnabled(false);
    setLineWrapMode(QPlainTextEdit::NoWrap);
    timer_.setSingleShot(true);
    timer_.setInterval(kRefreshMs);
    connect(&timer_, &QTimer::timeout, this, &LogView::flush);
}

void LogView::add(std::u16string_view entry) {
    entries_ += entry;
    ends_.push_back(entries_.size());
    if (!timer_.isActive()) {
        timer_.start();
    }
}

std::u16string_view LogView::entry(std::size_t index) const {
    const std::size_t begin = index == 0 ? 0 : ends_[index - 1];
    return std::u16string_view(entries_).substr(begin, ends_[index] - begin);
}

std::u16string LogView::wholeText() const {
    std::u16string text;
    text.reserve(entries_.size() + 2 * ends_.size());
    for (std::size_t i = ends_.size(); i > 0; --i) {
        text += entry(i - 1);
        text += u"\r\n";
    }
    return text;
}

void LogView::flush() {
    timer_.stop();
    if (shown_ == ends_.size()) {
        return;
    }
    QString text;
    std::ptrdiff_t lines = 0;
    for (std::size_t i = ends_.size(); i > shown_ && lines < kViewLines; --i) {
        const std::u16string_view whole = entry(i - 1);
        lines += 1 + std::count(whole.begin(), whole.end(), u'\n');
        text += toQt(whole.substr(0, kViewEntryUnits));
        text += whole.size() > kViewEntryUnits ? u"…\n" : u"\n";
    }
    shown_ = ends_.size();

    QScrollBar& bar = *verticalScrollBar();
    const bool atTop = bar.value() == bar.minimum();
    const int before = blockCount();
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    cursor.insertText(text);
    const int added = blockCount() - before;
    if (const QTextBlock cut = document()->findBlockByNumber(kViewLines); cut.isValid()) {
        cursor.setPosition(cut.position());
        cursor.movePosition(QTextCursor::End, QTextCursor::KeepAnchor);
        cursor.removeSelectedText();
    }
    cursor.endEditBlock();
    // A reader who scrolled down keeps the lines before his eyes.
    bar.setValue(atTop ? bar.minimum() : bar.value() + added);
}

void LogView::clearEntries() {
    entries_.clear();
    ends_.clear();
    shown_ = 0;
    timer_.stop();
    clear();
}

} // namespace kelb::app
