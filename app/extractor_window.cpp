#include "app/extractor_window.h"

#include "app/qt_text.h"
#include "app/texts.h"
#include "app/user_dialogs.h"
#include "jobs/template_extract.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QSplitter>
#include <QTabWidget>
#include <QTextBlock>
#include <QUrl>

#include <algorithm>
#include <exception>
#include <utility>

namespace kelb::app {

using extract::FrmExtractor;
using extract::TemplateRow;

namespace {

constexpr qint64 kPumpEvery = 20;  // milliseconds
constexpr qint64 kShowEvery = 100; // milliseconds: putting a page's text into its view takes one or two
constexpr int kMostMarked = 2'000; // fragments that are marked as hits
constexpr char kCaption[] = "内容管理";

QLabel& plainLabel(QWidget& owner, const char* name, const char* text = "") {
    auto* made = new QLabel(QString::fromUtf8(text), &owner);
    made->setObjectName(name);
    made->setTextFormat(Qt::PlainText);
    made->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    return *made;
}

/// A fragment stays on one line, so that names and fragments stand side by side.
QString linesOf(std::span<const std::u16string_view> pieces) {
    QString lines;
    for (const std::u16string_view piece : pieces) {
        QString line = toQt(piece);
        line.replace("\r\n", "⏎").replace('\n', "⏎").replace('\r', "⏎");
        lines += line;
        lines += "\r\n";
    }
    lines.chop(2);
    return lines;
}

/// Lines of one height, whatever fonts their characters come from.
void setLines(QTextEdit& view, const QString& lines) {
    view.setPlainText(lines);
    QTextBlockFormat format;
    format.setLineHeight(view.fontMetrics().height() * 1.25, QTextBlockFormat::FixedHeight);
    QTextCursor all(view.document());
    all.select(QTextCursor::Document);
    all.mergeBlockFormat(format);
}

} // namespace

ExtractorWindow::ExtractorWindow(Parts parts)
    : parts_(std::move(parts)), body_(text("Text1", "这里将用来显示提取出来的内容！")),
      fragments_(text("Text2", "arrTagModel")), names_(text("Text3", "arrTagModelBro")),
      article_(text("Text4", "arrTagArticle")), path_(*new QLineEdit(this)),
      result_(plainLabel(*this, "Label2", "信息:")),
      phase_(plainLabel(*this, "Label1", "说明： 如果你使用的是默认设置，直接点开始就可以了。")),
      hint_(plainLabel(*this, "LabelHint")), counts_(plainLabel(*this, "LabelCounts")),
      hitCounts_(plainLabel(*this, "LabelHits")), interrupt_(box("Check1", "中断", texts::kInterruptTip)),
      slow_(box("Check2", "慢速", texts::kSlowTip)) {
    setObjectName("FrmExtractor");
    const QString caption = QString::fromUtf8(kCaption);
    setWindowTitle(parts_.dryRun ? texts::shown(texts::kExtractorDryRun).arg(caption) : caption);
    path_.setObjectName("Text5");
    path_.setReadOnly(true);
    auto* tabs = new QTabWidget;
    tabs->setObjectName("SSTab1");
    tabs->addTab(resultTab(), texts::shown(texts::kTabResult));
    tabs->addTab(modelTab(), texts::shown(texts::kTabModel));
    auto* layout = new QVBoxLayout(this);
    for (QLabel* line : {&phase_, &hint_}) {
        layout->addWidget(line);
    }
    layout->addWidget(&path_);
    layout->addWidget(tabs, 1);
    for (QLabel* line : {&result_, &counts_}) {
        layout->addWidget(line);
    }
    layout->addWidget(buttonRow());
    resize(QSize(960, 680).boundedTo(screen()->availableSize()));

    timer_.setObjectName("Timer1");
    timer_.setInterval(static_cast<int>(parts_.context->configuration().number(jobs::Setting::TemplateTimerMs)));
    connect(&timer_, &QTimer::timeout, this, &ExtractorWindow::Timer1_Timer);
    extractor_.emplace(jobs::extractorParts(*parts_.context), static_cast<extract::ExtractorView&>(*this));
    sincePump_.start();
    sinceShown_.start();
    showPending();
}

ExtractorWindow::~ExtractorWindow() {
    timer_.stop();
    extractor_.reset();
    try {
        parts_.context->templateWorkflow().close();
    } catch (const std::exception& failure) {
        parts_.log(QString::fromUtf8(failure.what()));
    }
}

QTextEdit& ExtractorWindow::text(const char* name, const char* shown) {
    auto* made = new QTextEdit(this);
    made->setAcceptRichText(false);
    made->setPlainText(QString::fromUtf8(shown));
    made->setObjectName(name);
    made->setReadOnly(true);
    made->setUndoRedoEnabled(false);
    return *made;
}

QCheckBox& ExtractorWindow::box(const char* name, const char* caption, const char* toolTip) {
    auto* made = new QCheckBox(QString::fromUtf8(caption), this);
    made->setObjectName(name);
    made->setToolTip(texts::shown(toolTip));
    return *made;
}

QPushButton* ExtractorWindow::button(const char* name, const QString& caption, const char* toolTip,
                                     void (ExtractorWindow::*pressed)()) {
    auto* made = new QPushButton(caption);
    made->setObjectName(name);
    made->setToolTip(texts::shown(toolTip));
    connect(made, &QPushButton::clicked, this, pressed);
    return made;
}

QWidget* ExtractorWindow::buttonRow() {
    auto* row = new QWidget;
    auto* line = new QHBoxLayout(row);
    line->setContentsMargins(0, 0, 0, 0);
    const auto add = [&](const char* name, const QString& caption, const char* toolTip,
                         void (ExtractorWindow::*pressed)()) {
        line->addWidget(button(name, caption, toolTip, pressed));
    };
    add("Command1", QString::fromUtf8("连续提取"), texts::kContinuousTip, &ExtractorWindow::Command1_Click);
    add("Command5", QString::fromUtf8("上一篇"), texts::kBackTip, &ExtractorWindow::Command5_Click);
    add("CmdNxt", QString::fromUtf8("下一篇"), texts::kNextPageTip, &ExtractorWindow::CmdNxt_Click);
    line->addWidget(&interrupt_);
    line->addWidget(&slow_);
    line->addStretch(1);
    add("Command2", QString::fromUtf8("打开提取结果"), texts::kOpenResultTip, &ExtractorWindow::Command2_Click);
    add("Command4", texts::shown(texts::kSetupButton), texts::kSetupTip, &ExtractorWindow::Command4_Click);
    auto* closes = new QPushButton(texts::shown(texts::kCloseButton));
    closes->setObjectName("Command3");
    closes->setToolTip(texts::shown(texts::kCloseTip));
    connect(closes, &QPushButton::clicked, this, &QWidget::close);
    line->addWidget(closes);
    return row;
}

QWidget* ExtractorWindow::resultTab() {
    auto* tab = new QWidget;
    (new QVBoxLayout(tab))->addWidget(&body_);
    return tab;
}

QWidget* ExtractorWindow::modelTab() {
    for (QTextEdit* view : {&fragments_, &names_}) {
        view->setLineWrapMode(QTextEdit::NoWrap);
    }
    // Names and fragments move together.
    for (const auto& [from, to] : {std::pair{&fragments_, &names_}, std::pair{&names_, &fragments_}}) {
        connect(from->verticalScrollBar(), &QScrollBar::valueChanged, to->verticalScrollBar(), &QScrollBar::setValue);
    }
    auto* sides = new QSplitter;
    sides->addWidget(&names_);
    sides->addWidget(&fragments_);
    sides->addWidget(&article_);
    sides->setSizes({180, 560, 120});
    auto* tab = new QWidget;
    auto* layout = new QVBoxLayout(tab);
    layout->addWidget(sides, 1);
    layout->addWidget(&hitCounts_);
    return tab;
}

bool ExtractorWindow::Form_Load() {
    return extractor_->readModel(jobs::modelPagePath({}, *parts_.context));
}

void ExtractorWindow::requestStop() {
    interrupt_.setChecked(true);
}

void ExtractorWindow::say(const char* text) {
    result_.setText(texts::shown(text));
}

/// Runs one operation to its end. No error leaves it: it ends the run and is told in a box and in the log.
void ExtractorWindow::operate(void (FrmExtractor::*operation)()) {
    if (running_ || parts_.jobRuns()) {
        say(running_ ? texts::kExtractorBusy : texts::kJobRunsElsewhere);
        return;
    }
    running_ = true;
    QString error;
    try {
        ((*extractor_).*operation)();
        parts_.context->templateWorkflow().destination().flush();
    } catch (const std::exception& failure) {
        error = QString::fromUtf8(failure.what());
        timer_.stop();
    }
    running_ = false;
    showPending();
    if (!error.isEmpty()) {
        parts_.log(error);
        parts_.dialogs.error(this, windowTitle(), error);
    }
    parts_.finished();
    if (closeAsked_) {
        close();
    }
}

void ExtractorWindow::Command1_Click() {
    operate(&FrmExtractor::Command1_Click);
}

void ExtractorWindow::CmdNxt_Click() {
    if (!running_ && extractor_->atEnd()) {
        say(texts::kAtEnd);
        return;
    }
    operate(&FrmExtractor::CmdNxt_Click);
}

void ExtractorWindow::Command5_Click() {
    operate(&FrmExtractor::Command5_Click);
}

void ExtractorWindow::Timer1_Timer() {
    if (!running_ && !parts_.jobRuns()) {
        operate(&FrmExtractor::Timer1_Timer);
    }
}

void ExtractorWindow::Command2_Click() {
    const std::u16string& path = parts_.context->templateWorkflow().sDestDbPath();
    platform::FileSystem& files = parts_.context->platform().files;
    if (!files.fileExists(path)) {
        parts_.dialogs.message(this, QString::fromUtf8("文件未找到"), QString::fromUtf8("文件未找到: ") + toQt(path));
    } else if (!QDesktopServices::openUrl(QUrl::fromLocalFile(toQt(files.nativePath(path))))) {
        parts_.dialogs.message(this, windowTitle(), texts::shown(texts::kNothingOpens).arg(toQt(path)));
    }
}

void ExtractorWindow::Command4_Click() {
    if (running_) {
        say(texts::kExtractorBusy);
        return;
    }
    parts_.showSetup();
}

void ExtractorWindow::closeEvent(QCloseEvent* event) {
    timer_.stop();
    if (running_) {
        closeAsked_ = true;
        requestStop();
        event->ignore();
        return;
    }
    QWidget::closeEvent(event);
}

void ExtractorWindow::showModel(const extract::TemplateModel& model) {
    setLines(fragments_, linesOf(model.fragments()));
    setLines(names_, linesOf(model.names()));
}

void ExtractorWindow::showHits(const extract::Alignment& alignment) {
    pending_.hits = alignment;
}

void ExtractorWindow::showPath(std::u16string_view path) {
    pending_.path = path;
}

void ExtractorWindow::showBody(std::u16string_view body) {
    pending_.body = body;
}

void ExtractorWindow::showResult(std::u16string_view text) {
    pending_.result = text;
}

void ExtractorWindow::showPhase(std::u16string_view text) {
    pending_.phase = text;
}

void ExtractorWindow::rowDone(TemplateRow row, std::u16string_view) {
    ++rowCounts_[static_cast<std::size_t>(row)];
}

bool ExtractorWindow::interrupted() {
    return interrupt_.isChecked();
}

bool ExtractorWindow::slow() {
    return slow_.isChecked();
}

void ExtractorWindow::switchTimer(bool on) {
    if (on) {
        timer_.start();
    } else {
        timer_.stop();
    }
}

void ExtractorWindow::message(std::u16string_view title, std::u16string_view text) {
    showPending();
    parts_.dialogs.message(this, toQt(title), toQt(text));
}

void ExtractorWindow::yield() {
    if (sincePump_.elapsed() < kPumpEvery) {
        return;
    }
    if (sinceShown_.elapsed() >= kShowEvery) {
        showPending();
    }
    QCoreApplication::processEvents();
    sincePump_.restart();
}

void ExtractorWindow::showPending() {
    sinceShown_.restart();
    const Pending now = std::exchange(pending_, {});
    if (now.path) {
        path_.setText(toQt(*now.path));
    }
    if (now.body) {
        body_.setPlainText(toQt(*now.body));
    }
    if (now.result) {
        result_.setText(toQt(*now.result));
    }
    if (now.phase) {
        phase_.setText(toQt(*now.phase));
    }
    if (now.hits) {
        markHits(*now.hits);
    }
    const std::int32_t missing = FrmExtractor::kWarmUpPages + 1 - extractor_->longPages();
    hint_.setText(missing > 0 ? texts::shown(texts::kLearning).arg(missing) : texts::shown(texts::kSaving));
    const auto rows = [this](TemplateRow row) { return rowCounts_[static_cast<std::size_t>(row)]; };
    std::size_t done = 0;
    for (const std::size_t count : rowCounts_) {
        done += count;
    }
    const jobs::TemplateWorkflow& workflow = parts_.context->templateWorkflow();
    if (workflow.isOpen()) {
        counts_.setText(texts::shown(texts::kExtractorCounts)
                            .arg(parts_.context->templateWorkflow().rsSource().RecordCount())
                            .arg(done)
                            .arg(rows(TemplateRow::Saved))
                            .arg(rows(TemplateRow::TooShort) + rows(TemplateRow::NoPageFile))
                            .arg(rows(TemplateRow::TooLong)));
    }
}

void ExtractorWindow::markHits(const extract::Alignment& alignment) {
    QColor mark = palette().color(QPalette::Highlight);
    mark.setAlphaF(0.3F);
    QList<QTextEdit::ExtraSelection> marked;
    std::size_t hits = 0;
    QTextBlock block = fragments_.document()->begin();
    for (std::size_t i = 0; i < alignment.hits.size() && block.isValid(); ++i, block = block.next()) {
        if (!alignment.hits[i]) {
            continue;
        }
        ++hits;
        if (marked.size() < kMostMarked) {
            QTextEdit::ExtraSelection selection;
            selection.cursor = QTextCursor(block);
            selection.format.setBackground(mark);
            selection.format.setProperty(QTextFormat::FullWidthSelection, true);
            marked += selection;
        }
    }
    fragments_.setExtraSelections(marked);
    hitCounts_.setText(texts::shown(texts::kModelHits)
                           .arg(hits)
                           .arg(alignment.hits.size())
                           .arg(alignment.forward)
                           .arg(alignment.reverse));
}

} // namespace kelb::app
