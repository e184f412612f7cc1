#include "app/FrmStp1.h"

#include "ado/connection_string.h"
#include "app/path_field.h"
#include "app/qt_text.h"
#include "app/texts.h"
#include "app/user_dialogs.h"
#include "platform/text.h"

#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QTableWidget>
#include <QVBoxLayout>

#include <exception>

namespace kelb::app {
namespace {

constexpr char kMissingTitle[] = "文件未找到!";
constexpr std::u16string_view kPreviewQuery = u"select top 20 * from bbsforum";
constexpr std::size_t kPreviewCharacters = 80;
constexpr int kTypingEnds = 400; // milliseconds

QLabel* label(const char* name, const char* text, QWidget* buddy) {
    auto* made = new QLabel(QString::fromUtf8(text));
    made->setObjectName(name);
    made->setBuddy(buddy);
    return made;
}

} // namespace

FrmStp1::FrmStp1(std::shared_ptr<jobs::Context> context, UserDialogs& dialogs, std::function<void()> openExtractor,
                 QWidget* parent)
    : QDialog(parent), context_(std::move(context)), dialogs_(dialogs), openExtractor_(std::move(openExtractor)),
      source_(list("Combo3", true)), sourceTable_(list("Combo4", false)), query_(list("Combo5", true)),
      sourceType_(list("Combo6", false)), destinationType_(list("Combo7", false)), destination_(list("Combo1", true)),
      destinationTable_(list("Combo2", true)), rows_(*new QTableWidget(this)), previewState_(*new QLabel(this)) {
    setObjectName("FrmStp1");
    setWindowTitle(QString::fromUtf8("参数设定 - 内容提取"));
    rows_.setObjectName("PreviewRows");
    rows_.setEditTriggers(QAbstractItemView::NoEditTriggers);
    rows_.verticalHeader()->hide();
    previewState_.setTextFormat(Qt::PlainText);
    previewState_.setWordWrap(true);

    auto* next = new QPushButton(QString::fromUtf8("下一步"));
    next->setObjectName("Command1");
    next->setToolTip(texts::shown(texts::kNextTip));
    next->setDefault(true);
    connect(next, &QPushButton::clicked, this, &FrmStp1::Command1_Click);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(label("Label8", "请指定从哪个数据库提取内容,存放到哪个数据库", nullptr));
    layout->addWidget(sourceFrame());
    layout->addWidget(&previewState_);
    layout->addWidget(&rows_, 1);
    layout->addWidget(destinationFrame());
    layout->addWidget(next, 0, Qt::AlignRight);
    resize(QSize(760, 640).boundedTo(screen()->availableSize()));

    previewTimer_.setSingleShot(true);
    previewTimer_.setInterval(kTypingEnds);
    connect(&previewTimer_, &QTimer::timeout, this, &FrmStp1::preview);
    connect(&source_, &QComboBox::currentTextChanged, this, [this] { previewTimer_.start(); });
}

QComboBox& FrmStp1::list(const char* name, bool editable) {
    auto* made = new QComboBox(this);
    made->setObjectName(name);
    made->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    made->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    if (editable) {
        made->setEditable(true);
        made->setLineEdit(new PathField(made)); // takes files that are dropped on it
    }
    return *made;
}

QWidget* FrmStp1::withBrowse(QComboBox& field, const char* button, const char* title) {
    auto* browse = new QPushButton(texts::shown(texts::kBrowse));
    browse->setObjectName(button);
    browse->setAutoDefault(false);
    connect(browse, &QPushButton::clicked, this, [this, &field, title] {
        const QString path =
            dialogs_.openFile(this, texts::shown(title), QString(), texts::shown(texts::kDatabaseFilter));
        if (!path.isEmpty()) {
            field.setEditText(path);
        }
    });
    auto* both = new QWidget;
    auto* line = new QHBoxLayout(both);
    line->setContentsMargins(0, 0, 0, 0);
    line->addWidget(&field, 1);
    line->addWidget(browse);
    return both;
}

QWidget* FrmStp1::sourceFrame() {
    auto* frame = new QGroupBox(QString::fromUtf8("原始的网页(HTML)"));
    frame->setObjectName("Frame1");
    query_.setToolTip(texts::shown(texts::kQueryTip));
    sourceType_.setToolTip(texts::shown(texts::kTypeTip));
    auto* form = new QFormLayout(frame);
    form->addRow(label("Label4", "1. 请选择源数据库", &source_),
                 withBrowse(source_, "BrowseSource", texts::kChooseSource));
    form->addRow(label("Label6", "2. 选择源表:", &sourceTable_), &sourceTable_);
    form->addRow(label("Label5", "3. 根据上述条件将执行以下SQL语句：", &query_), &query_);
    form->addRow(label("Label1", "4. 选择数据库类型: ", &sourceType_), &sourceType_);
    return frame;
}

QWidget* FrmStp1::destinationFrame() {
    auto* frame = new QGroupBox(QString::fromUtf8("提取的内容(文本)"));
    frame->setObjectName("Frame2");
    destinationType_.setToolTip(texts::shown(texts::kTypeTip));
    auto* form = new QFormLayout(frame);
    form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    form->addRow(label("Label7", "3. 选择数据库类型: ", &destinationType_), &destinationType_);
    form->addRow(label("Label2", "4. 目的数据库: (解释：提取出来的内容，保存到这个数据库)", &destination_),
                 withBrowse(destination_, "BrowseDestination", texts::kChooseDestination));
    form->addRow(label("Label3", "5. 目的表: ", &destinationTable_), &destinationTable_);
    return frame;
}

void FrmStp1::Form_Load() {
    const jobs::TemplateProposals proposals = jobs::templateProposals(context_->configuration());
    const auto missing = [&](const std::u16string& path, const char* what) {
        if (context_->platform().files.fileExists(path)) {
            return false;
        }
        dialogs_.message(this, QString::fromUtf8(kMissingTitle), QString::fromUtf8(what) + toQt(path));
        return true;
    };
    try {
        if (missing(proposals.source, "找不到源数据库: ") || missing(proposals.destination, "找不到目的数据库: ")) {
            return;
        }
    } catch (const std::exception& failure) { // a drive without a mapping
        dialogs_.error(this, QString::fromUtf8(kMissingTitle), QString::fromUtf8(failure.what()));
        return;
    }
    for (const std::u16string& path : proposals.sources) {
        source_.addItem(toQt(path));
    }
    sourceTable_.addItem("bbsforum");
    for (const std::u16string& query : proposals.queries) {
        query_.addItem(toQt(query));
    }
    for (QComboBox* types : {&sourceType_, &destinationType_}) {
        types->addItems({"Access", "Microsoft SQL"});
    }
    destination_.addItem(toQt(ado::jetConnectionString(proposals.destination)));
    destinationTable_.addItem("wxAll");
}

void FrmStp1::Command1_Click() {
    if (source_.currentText().isEmpty()) {
        dialogs_.message(this, QString::fromUtf8("请指定数据源"), QString::fromUtf8("请选择一个数据源!"));
    }
    if (destination_.currentText().isEmpty()) {
        dialogs_.message(this, QString::fromUtf8("请指定数据库"),
                         QString::fromUtf8("请选择一个存放提取出来的内容的数据库!"));
    }
    const QString table = destinationTable_.currentText();
    try {
        context_->templateWorkflow().open({.source = fromQt(source_.currentText()),
                                           .destination = fromQt(destination_.currentText()),
                                           .destinationTable = table.isEmpty() ? u"wxAll" : fromQt(table),
                                           .query = fromQt(query_.currentText())});
        openExtractor_();
    } catch (const std::exception& failure) {
        context_->templateWorkflow().close();
        dialogs_.error(this, windowTitle(), QString::fromUtf8(failure.what()));
        return;
    }
    close();
}

void FrmStp1::preview() {
    rows_.clear();
    rows_.setRowCount(0);
    rows_.setColumnCount(0);
    previewState_.setText(texts::shown(texts::kPreview));
    try {
        if (const std::u16string path = fromQt(source_.currentText()); !path.empty()) {
            fillPreview(path);
        }
    } catch (const std::exception& failure) {
        previewState_.setText(texts::shown(texts::kPreviewFailed).arg(QString::fromUtf8(failure.what())));
    }
}

void FrmStp1::fillPreview(const std::u16string& path) {
    ado::Connection connection(context_->databases());
    connection.mode = ado::Connection::Mode::Read;
    connection.Open(ado::jetConnectionString(path));
    ado::Recordset rows;
    rows.Open(kPreviewQuery, connection);
    QStringList names;
    for (std::size_t i = 0; i < rows.fieldCount(); ++i) {
        names += toQt(rows.field(i).name);
    }
    rows_.setColumnCount(static_cast<int>(names.size()));
    rows_.setHorizontalHeaderLabels(names);
    std::u16string text;
    for (int row = 0; !rows.Eof(); rows.MoveNext(), ++row) {
        rows_.insertRow(row);
        for (std::size_t i = 0; i < rows.fieldCount(); ++i) {
            rows.text(i, text);
            rows_.setItem(row, static_cast<int>(i),
                          new QTableWidgetItem(toQt(platform::left(text, kPreviewCharacters)).simplified()));
        }
    }
    rows_.resizeColumnsToContents();
    rows_.resizeRowsToContents();
}

} // namespace kelb::app
