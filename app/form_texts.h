#pragma once

#include "app/texts.h"

#include <QString>

class QObject;

namespace kelb::app {

/// Gives every widget and menu entry below `root` that the tables of texts.h name its caption, tooltip and Alt key.
void applyTexts(QObject& root);

/// The text of this job button; nullptr for another object.
[[nodiscard]] const texts::JobText* jobText(const QString& button);

/// The caption of a button below `root`, as it is read: without the mark of its Alt key.
[[nodiscard]] QString captionOf(const QObject& root, const char* button);

/// A page (rich text) that explains every job: caption of its button, what it does, what it changes.
/// `root`: the window, whose buttons are asked for their captions.
[[nodiscard]] QString jobsPage(const QObject& root);

} // namespace kelb::app
