#include "app/remembered_fields.h"

#include <QComboBox>
#include <QLineEdit>
#include <QMainWindow>
#include <QSettings>
#include <QSplitter>

namespace kelb::app {
namespace {

// `Check1` and the stop boxes are not among them: they start unticked.
constexpr const char* kFields[] = {"TextSource", "Text3", "Text1", "Combo1", "Combo2"};
constexpr char kGeometry[] = "window/geometry";
constexpr char kSplitter[] = "window/splitter";

QString valueOf(const QWidget& field) {
    if (const auto* combo = qobject_cast<const QComboBox*>(&field)) {
        return combo->currentText();
    }
    return qobject_cast<const QLineEdit*>(&field)->text();
}

void setValue(QWidget& field, const QString& value) {
    if (auto* combo = qobject_cast<QComboBox*>(&field)) {
        if (const int at = combo->findText(value); at >= 0) {
            combo->setCurrentIndex(at);
        }
    } else {
        qobject_cast<QLineEdit*>(&field)->setText(value);
    }
}

QString keyOf(const char* field) {
    return u"fields/%1"_qs.arg(QLatin1String(field));
}

} // namespace

RememberedFields::RememberedFields(QMainWindow& window, QSettings& settings) : window_(window), settings_(settings) {
    for (const char* field : kFields) {
        defaults_ += valueOf(*window.findChild<QWidget*>(QLatin1String(field)));
    }
}

void RememberedFields::restore() {
    for (const char* field : kFields) {
        if (const QString key = keyOf(field); settings_.contains(key)) {
            setValue(*window_.findChild<QWidget*>(QLatin1String(field)), settings_.value(key).toString());
        }
    }
    window_.restoreGeometry(settings_.value(kGeometry).toByteArray());
    window_.findChild<QSplitter*>("Splitter")->restoreState(settings_.value(kSplitter).toByteArray());
}

void RememberedFields::save() {
    qsizetype i = 0;
    for (const char* field : kFields) {
        const QString value = valueOf(*window_.findChild<QWidget*>(QLatin1String(field)));
        if (value == defaults_[i++]) {
            settings_.remove(keyOf(field));
        } else {
            settings_.setValue(keyOf(field), value);
        }
    }
    settings_.setValue(kGeometry, window_.saveGeometry());
    settings_.setValue(kSplitter, window_.findChild<QSplitter*>("Splitter")->saveState());
}

} // namespace kelb::app
