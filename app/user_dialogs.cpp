#include "app/user_dialogs.h"

#include "app/texts.h"

#include <QFileDialog>
#include <QGuiApplication>
#include <QMessageBox>
#include <QPushButton>

#include <cstdio>

namespace kelb::app {
namespace {

/// A box with more text than this would grow past the screen; the whole text then stands behind its details button.
constexpr qsizetype kBoxCharacters = 1'000;
constexpr qsizetype kBoxLines = 15;

class ScreenDialogs final : public UserDialogs {
public:
    void message(QWidget* parent, const QString& title, const QString& text) override {
        show(parent, QMessageBox::Information, title, text);
    }
    void error(QWidget* parent, const QString& title, const QString& text) override {
        show(parent, QMessageBox::Critical, title, text);
    }
    bool confirm(QWidget* parent, const QString& title, const QString& question) override {
        QMessageBox box(QMessageBox::Question, title, QString(), QMessageBox::NoButton, parent);
        setText(box, question);
        const QPushButton* yes = box.addButton(texts::shown(texts::kYes), QMessageBox::AcceptRole);
        QPushButton* no = box.addButton(texts::shown(texts::kNo), QMessageBox::RejectRole);
        box.setDefaultButton(no);
        box.setEscapeButton(no);
        box.exec();
        return box.clickedButton() == yes;
    }
    QString openFile(QWidget* parent, const QString& title, const QString& start, const QString& filter) override {
        return QFileDialog::getOpenFileName(parent, title, start, filter);
    }
    QString saveFile(QWidget* parent, const QString& title, const QString& start, const QString& filter) override {
        return QFileDialog::getSaveFileName(parent, title, start, filter);
    }
    QString openFolder(QWidget* parent, const QString& title, const QString& start) override {
        return QFileDialog::getExistingDirectory(parent, title, start);
    }

private:
    static void show(QWidget* parent, QMessageBox::Icon icon, const QString& title, const QString& text) {
        QMessageBox box(icon, title, QString(), QMessageBox::NoButton, parent);
        setText(box, text);
        box.addButton(texts::shown(texts::kOk), QMessageBox::AcceptRole);
        box.exec();
    }
    static void setText(QMessageBox& box, const QString& text) {
        box.setTextFormat(Qt::PlainText); // texts of pages hold tags
        if (text.size() <= kBoxCharacters && text.count(u'\n') < kBoxLines) {
            box.setText(text);
            return;
        }
        box.setText(texts::shown(texts::kLongText).arg(text.section(u'\n', 0, kBoxLines - 1).left(kBoxCharacters)));
        box.setDetailedText(text);
    }
};

class PrintedDialogs final : public UserDialogs {
public:
    void message(QWidget*, const QString& title, const QString& text) override { print(stdout, title, text); }
    void error(QWidget*, const QString& title, const QString& text) override { print(stderr, title, text); }
    bool confirm(QWidget*, const QString& title, const QString& question) override {
        print(stdout, title, question);
        return false;
    }
    QString openFile(QWidget*, const QString&, const QString&, const QString&) override { return {}; }
    QString saveFile(QWidget*, const QString&, const QString&, const QString&) override { return {}; }
    QString openFolder(QWidget*, const QString&, const QString&) override { return {}; }

private:
    static void print(std::FILE* stream, const QString& title, const QString& text) {
        std::fprintf(stream, "[%s] %s\n", title.toUtf8().constData(), text.toUtf8().constData());
        std::fflush(stream);
    }
};

} // namespace

std::unique_ptr<UserDialogs> makeUserDialogs() {
    const QString platform = QGuiApplication::platformName();
    if (platform == u"offscreen" || platform == u"minimal") {
        return std::make_unique<PrintedDialogs>();
    }
    return std::make_unique<ScreenDialogs>();
}

} // namespace kelb::app
