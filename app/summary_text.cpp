#include "app/summary_text.h"

#include <QCoreApplication>
#include <QLocale>
#include <QStringList>

namespace kelb::app {
namespace {

QString reasonsOf(const jobs::JobSummary& summary) {
    QStringList reasons;
    for (const auto& [reason, rows] : summary.skippedBecause) {
        reasons += u"%1 %2"_qs.arg(texts::shown(reason.c_str())).arg(rows);
    }
    return reasons.isEmpty() ? QString() : texts::shown(texts::kInBrackets).arg(reasons.join(texts::shown(texts::kComma)));
}

} // namespace

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
    add(texts::kSummarySkipped, summary.skipped, reasonsOf(summary));
    add(texts::kSummaryFailed, summary.failed);
    add(texts::kSummaryDeletedRows, summary.deletedRows);
    add(texts::kSummaryDeletedFiles, summary.deletedFiles);
    add(texts::kSummaryOverflow, summary.overflowFiles);
    add(texts::kSummaryReplaced, summary.replacedCharacters);
    parts += texts::shown(texts::kSummarySeconds).arg(QLocale::c().toString(summary.seconds, 'f', 2));
    QString text = parts.join(texts::shown(texts::kComma)) + texts::shown(texts::kFullStop);
    if (summary.stopped) {
        text += texts::shown(texts::kSummaryStopped);
    }
    return summary.note.empty() ? text : text + u'\n' + texts::shown(summary.note.c_str());
}

} // namespace kelb::app
