#include "app/source_row_dialog.h"

#include "app/qt_text.h"
#include "app/still_page.h"
#include "app/texts.h"
#include "app/user_dialogs.h"
#include "jobs/context.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QSplitter>
#include <QTableWidget>
#include <QVBoxLayout>

#include <exception>

namespace kelb::app {
namespace {

constexpr qsizetype kShownInCell = 200; ///< characters

QTableWidget* tableOf(const jobs::SourceRow& row) {
    auto* table = new QTableWidget(static_cast<int>(row.fields.size()), 2);
    table->setObjectName("SourceRowFields");
    table->setAccessibleName(texts::shown(texts::kSourceRowTitle).arg(toQt(row.table)));
    table->setHorizontalHeaderLabels({texts::shown(texts::kSourceRowField), texts::shown(texts::kSourceRowValue)});
    table->horizontalHeader()->setStretchLastSection(true);
    table->verticalHeader()->hide();
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setTabKeyNavigation(false);
    table->setWordWrap(false);
    int line = 0;
    for (const jobs::RowField& field : row.fields) {
        table->setItem(line, 0, new QTableWidgetItem(toQt(field.name)));
        auto* value = new QTableWidgetItem(field.null ? QStringLiteral("Null")
                                                      : toQt(field.text).left(kShownInCell).simplified());
        if (field.null) {
            value->setForeground(table->palette().color(QPalette::PlaceholderText));
        }
        table->setItem(line++, 1, value);
    }
    table->resizeColumnToContents(0);
    return table;
}

} // namespace

QDialog* showSourceRow(QWidget* parent, const jobs::SourceRow& row) {
    auto* dialog = new QDialog(parent);
    dialog->setObjectName("SourceRow");
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(texts::shown(texts::kSourceRowTitle).arg(toQt(row.table)));
    auto* where = new QLabel(toQt(row.database));
    where->setTextFormat(Qt::PlainText);
    where->setTextInteractionFlags(Qt::TextSelectableByMouse);
    where->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    QTableWidget* table = tableOf(row);
    auto* whole = new StillPage;
    whole->setObjectName("SourceRowValue");
    whole->setAccessibleName(texts::shown(texts::kSourceRowWhole));
    QObject::connect(table, &QTableWidget::currentCellChanged, whole, [whole, fields = row.fields](int line) {
        whole->showText(line < 0 ? QString() : toQt(fields[static_cast<std::size_t>(line)].text));
    });
    table->setCurrentCell(0, 1);
    auto* splitter = new QSplitter(Qt::Vertical);
    splitter->addWidget(table);
    splitter->addWidget(whole);
    splitter->setSizes({300, 140});
    auto* buttons = new QDialogButtonBox;
    buttons->addButton(texts::shown(texts::kCloseButton), QDialogButtonBox::RejectRole);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    auto* layout = new QVBoxLayout(dialog);
    layout->addWidget(where);
    layout->addWidget(splitter, 1);
    layout->addWidget(buttons);
    dialog->resize(QSize(640, 500).boundedTo(dialog->screen()->availableSize()));
    dialog->show();
    return dialog;
}

QDialog* showSourceRow(QWidget* parent, jobs::Context& context, UserDialogs& dialogs, const jobs::RowName& name) {
    try {
        const auto row = jobs::SourceRows(context.databases()).find(name);
        if (row) {
            return showSourceRow(parent, *row);
        }
        tellSourceRowGone(parent, dialogs, name);
    } catch (const std::exception& failure) {
        dialogs.error(parent, texts::shown(texts::kSourcePage),
                      texts::shown(texts::kSourceNoDatabase).arg(QString::fromUtf8(failure.what())));
    }
    return nullptr;
}

void tellSourceRowGone(QWidget* parent, UserDialogs& dialogs, const jobs::RowName& name) {
    QString what = name.table.empty() ? QString() : toQt(name.table) + u' ';
    if (name.id) {
        what += u"id=%1 "_qs.arg(*name.id);
    }
    what += toQt(name.url);
    dialogs.message(parent, texts::shown(texts::kSourcePage),
                    texts::shown(texts::kSourceRowGone).arg(toQt(name.database), what.trimmed()));
}

} // namespace kelb::app
