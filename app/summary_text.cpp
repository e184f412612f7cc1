#include "app/summary_text.h"

#include "jobs/row_reasons.h"

#include <QLocale>
#include <QStringList>

#include <algorithm>
#include <string>

namespace kelb::app {
namespace {

constexpr bool everyReasonHasAWord() {
    return std::ranges::all_of(jobs::kRowReasons, [](const jobs::RowReason& reason) {
        return std::ranges::any_of(texts::kSummaryWords,
                                   [&](const texts::ObjectText& word) { return reason.name == word.object; });
    });
}
static_assert(everyReasonHasAWord());

/// A word that the tables do not know is shown as it is.
QString wordText(const std::string& word) {
    const auto* known = std::ranges::find_if(
        texts::kSummaryWords, [&word](const texts::ObjectText& candidate) { return word == candidate.object; });
    return known == std::end(texts::kSummaryWords) ? QString::fromStdString(word) : texts::shown(known->text);
}

QString reasonsOf(const jobs::JobSummary& summary, jobs::RowFate fate) {
    QStringList reasons;
    for (const auto& [reason, rows] : summary.because(fate)) {
        reasons += u"%1 %2"_qs.arg(wordText(reason)).arg(rows);
    }
    return reasons.isEmpty() ? QString()
                             : texts::shown(texts::kInBrackets).arg(reasons.join(texts::shown(texts::kComma)));
}

} // namespace

QString groupText(const jobs::RowGroup& group) {
    QString text = texts::shown(group.fate == jobs::RowFate::Saved     ? texts::kFateSaved
                                : group.fate == jobs::RowFate::Skipped ? texts::kFateSkipped
                                                                       : texts::kFateFailed);
    if (!group.reason.empty()) {
        text += u'：' + wordText(group.reason);
    }
    return text + u' ' + QLocale::c().toString(static_cast<qulonglong>(group.count));
}

QString summaryText(const jobs::JobSummary& summary, const texts::JobText* job) {
    const auto number = [](std::size_t count) { return QLocale::c().toString(static_cast<qulonglong>(count)); };
    const QString name = job == nullptr ? QString::fromStdString(summary.job) : texts::shown(job->name);
    QStringList parts{texts::shown(texts::kSummaryRows).arg(name, number(summary.rows))};
    const auto add = [&](const char* text, std::size_t count, const QString& more = {}) {
        if (count > 0) {
            parts += texts::shown(text).arg(number(count)) + more;
        }
    };
    add(texts::kSummarySaved, summary.saved);
    add(texts::kSummarySkipped, summary.skipped, reasonsOf(summary, jobs::RowFate::Skipped));
    add(texts::kSummaryFailed, summary.failed, reasonsOf(summary, jobs::RowFate::Failed));
    add(texts::kSummaryDeletedRows, summary.deletedRows);
    add(texts::kSummaryDeletedFiles, summary.deletedFiles);
    add(texts::kSummaryOverflow, summary.overflowFiles);
    add(texts::kSummaryReplaced, summary.replacedCharacters);
    parts += texts::shown(texts::kSummarySeconds).arg(QLocale::c().toString(summary.seconds, 'f', 2));
    QString text = parts.join(texts::shown(texts::kComma)) + texts::shown(texts::kFullStop);
    if (summary.dryRun) {
        text += texts::shown(texts::kSummaryDryRun);
    }
    if (summary.stopped) {
        text += texts::shown(texts::kSummaryStopped);
    }
    return summary.note.empty() ? text : text + u'\n' + wordText(summary.note);
}

} // namespace kelb::app
