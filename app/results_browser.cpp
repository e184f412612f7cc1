#include "app/results_browser.h"

#include "app/path_field.h"
#include "app/qt_text.h"
#include "app/texts.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include <utility>

namespace kelb::app {

ResultsBrowser::ResultsBrowser(Parts parts) : parts_(std::move(parts)), path_(*new PathField(this)) {
    setObjectName("TabResults");
    path_.setObjectName("ResultsPath");
    auto* caption = new QLabel(texts::shown(texts::kResultsDatabase));
    caption->setBuddy(&path_);
    auto* line = new QHBoxLayout;
    line->addWidget(caption);
    line->addWidget(&path_, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(line);
    layout->addStretch(1);
}

void ResultsBrowser::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    path_.setPlaceholderText(toQt(parts_.destination()));
}

} // namespace kelb::app
