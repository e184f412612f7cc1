#pragma once

#include "jobs/source_row.h"

class QDialog;
class QWidget;

namespace kelb::jobs {
class Context;
}

namespace kelb::app {

class UserDialogs;

/// A read-only window with every field of a row; it closes itself away.
QDialog* showSourceRow(QWidget* parent, const jobs::SourceRow& row);

/// The same for the row of this name; what is missing or cannot be read is told in a box, and there is no window then
/// (nullptr).
QDialog* showSourceRow(QWidget* parent, jobs::Context& context, UserDialogs& dialogs, const jobs::RowName& name);

/// Tells that a row of this name is not there any more.
void tellSourceRowGone(QWidget* parent, UserDialogs& dialogs, const jobs::RowName& name);

} // namespace kelb::app
