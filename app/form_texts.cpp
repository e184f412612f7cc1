#include "app/form_texts.h"

#include <QAbstractButton>
#include <QAction>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>

#include <algorithm>

namespace kelb::app {
namespace {

void setCaption(QObject& object, const QString& text) {
    if (auto* group = qobject_cast<QGroupBox*>(&object)) {
        group->setTitle(text);
    } else if (auto* menu = qobject_cast<QMenu*>(&object)) {
        menu->setTitle(text);
        menu->setToolTipsVisible(true);
    } else if (auto* action = qobject_cast<QAction*>(&object)) {
        action->setText(text);
    } else if (auto* button = qobject_cast<QAbstractButton*>(&object)) {
        button->setText(text);
    }
}

void setToolTip(QObject& object, const QString& text) {
    if (auto* action = qobject_cast<QAction*>(&object)) {
        action->setToolTip(text);
        action->setStatusTip(text);
    } else if (auto* widget = qobject_cast<QWidget*>(&object)) {
        // As rich text Qt breaks the line where it would leave the screen.
        widget->setToolTip(u"<qt>%1</qt>"_qs.arg(text.toHtmlEscaped()));
        widget->setAccessibleDescription(text);
    }
}

void setAltKey(QObject& object, char key) {
    const auto marked = [key](QString text) {
        const qsizetype at = text.indexOf(QLatin1Char(key));
        return at < 0 ? text : text.insert(at, u'&');
    };
    if (auto* label = qobject_cast<QLabel*>(&object)) {
        label->setText(marked(label->text()));
    } else if (auto* button = qobject_cast<QAbstractButton*>(&object)) {
        button->setText(marked(button->text()));
    }
}

} // namespace

void applyTexts(QObject& root) {
    const auto each = [&root](const auto& table, const auto& apply) {
        for (const auto& line : table) {
            const QList<QObject*> found = root.findChildren<QObject*>(QLatin1String(line.object));
            std::ranges::for_each(found, [&](QObject* object) { apply(*object, line); });
        }
    };
    each(texts::kCaptions,
         [](QObject& object, const texts::ObjectText& line) { setCaption(object, texts::shown(line.text)); });
    each(texts::kToolTips,
         [](QObject& object, const texts::ObjectText& line) { setToolTip(object, texts::shown(line.text)); });
    each(texts::kMnemonics, [](QObject& object, const texts::Mnemonic& line) { setAltKey(object, line.key); });
    for (const texts::JobText& job : texts::kJobs) {
        if (auto* button = root.findChild<QAbstractButton*>(QLatin1String(job.button))) {
            setToolTip(*button, texts::shown(job.summary));
        }
    }
}

const texts::JobText* jobText(const QString& button) {
    const auto* job = std::ranges::find_if(
        texts::kJobs, [&button](const texts::JobText& candidate) { return button == QLatin1String(candidate.button); });
    return job == std::end(texts::kJobs) ? nullptr : job;
}

QString captionOf(const QObject& root, const char* button) {
    const auto* widget = root.findChild<QAbstractButton*>(QLatin1String(button));
    return widget == nullptr ? QString() : widget->text().remove(u'&');
}

QString jobsPage(const QObject& root) {
    const auto escaped = [](const char* text) { return texts::shown(text).toHtmlEscaped(); };
    QString page =
        u"<h2>%1</h2><p>%2</p>"_qs.arg(escaped(texts::kJobsPageTitle), escaped(texts::kJobsPageIntroduction));
    for (const texts::JobText& job : texts::kJobs) {
        page += u"<h3>%1</h3><p><b>%2</b>：%3</p><p>%4</p>"_qs.arg(
            captionOf(root, job.button).toHtmlEscaped(), escaped(job.name), escaped(job.summary), escaped(job.detail));
    }
    return page;
}

} // namespace kelb::app
