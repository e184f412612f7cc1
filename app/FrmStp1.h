#pragma once

#include "jobs/context.h"

#include <QDialog>
#include <QTimer>

#include <functional>
#include <memory>

class QComboBox;
class QLabel;
class QTableWidget;

namespace kelb::app {

class UserDialogs;

/// The set-up dialog of the template workflow: proposes source and destination, opens both into the context's
/// `templateWorkflow()` and hands over to the extractor.
class FrmStp1 final : public QDialog {
public:
    /// `openExtractor` is called when everything is open, before the dialog closes; what it throws is shown like any
    /// failed opening.
    FrmStp1(std::shared_ptr<jobs::Context> context, UserDialogs& dialogs, std::function<void()> openExtractor,
            QWidget* parent);

    void Form_Load();      ///< fills the lists, or tells which database is missing
    void Command1_Click(); ///< "下一步"
    /// Shows the first rows of the chosen source; changes nothing.
    void preview();

private:
    QComboBox& list(const char* name, bool editable);
    QWidget* withBrowse(QComboBox& field, const char* button, const char* title);
    QWidget* sourceFrame();
    QWidget* destinationFrame();
    void fillPreview(const std::u16string& path);

    std::shared_ptr<jobs::Context> context_;
    UserDialogs& dialogs_;
    std::function<void()> openExtractor_;
    QComboBox &source_, &sourceTable_, &query_, &sourceType_;       ///< `Combo3` to `Combo6`
    QComboBox &destinationType_, &destination_, &destinationTable_; ///< `Combo7`, `Combo1`, `Combo2`
    QTableWidget& rows_;
    QLabel& previewState_;
    QTimer previewTimer_; ///< waits until the typing ends
};

} // namespace kelb::app
