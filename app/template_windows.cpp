#include "app/template_windows.h"

#include "app/FrmStp1.h"
#include "app/extractor_window.h"
#include "app/job_contexts.h"

#include <utility>

namespace kelb::app {

TemplateWindows::TemplateWindows(Parts parts) : parts_(std::move(parts)) {}

TemplateWindows::~TemplateWindows() {
    delete setup_;
    delete extractor_;
}

void TemplateWindows::showSetup() {
    delete setup_;
    delete extractor_;
    const RunOptions options = parts_.options();
    const std::shared_ptr<jobs::Context> context = parts_.contexts.hold(options);
    setup_ = new FrmStp1(
        context, parts_.dialogs,
        [this, context, dryRun = options.dryRun] {
            auto window = std::make_unique<ExtractorWindow>(
                ExtractorWindow::Parts{.context = context,
                                       .dialogs = parts_.dialogs,
                                       .dryRun = dryRun,
                                       .jobRuns = parts_.jobRuns,
                                       .log = parts_.log,
                                       // Later, since it deletes the window whose button asks for it.
                                       .showSetup =
                                           [this] {
                                               QMetaObject::invokeMethod(
                                                   extractor_, [this] { showSetup(); }, Qt::QueuedConnection);
                                           },
                                       .finished = parts_.finished});
            if (window->Form_Load()) {
                window->setAttribute(Qt::WA_DeleteOnClose);
                extractor_ = window.release();
                extractor_->show();
            }
        },
        nullptr);
    setup_->setAttribute(Qt::WA_DeleteOnClose);
    setup_->show();
    setup_->Form_Load();
}

FrmStp1* TemplateWindows::setup() const noexcept {
    return setup_.data();
}

ExtractorWindow* TemplateWindows::extractor() const noexcept {
    return extractor_.data();
}

bool TemplateWindows::extracts() const {
    return extractor_ != nullptr && extractor_->running();
}

void TemplateWindows::requestStop() {
    if (extractor_ != nullptr) {
        extractor_->requestStop();
    }
}

void TemplateWindows::closeAll() {
    if (setup_ != nullptr) {
        setup_->close();
    }
    if (extractor_ != nullptr) {
        extractor_->close();
    }
}

} // namespace kelb::app
