#pragma once

#include "platform/ui_pump.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace kelb::jobs {

/// Title of message boxes that have none of their own: the caption of the main window.
inline constexpr std::u16string_view kProgramTitle = u"网页内容提取";

/// Where page files lie, as the host's switch and field stand now.
struct PageLocation {
    bool lanMode = false;     ///< `Check1`: pages are files below the folder; otherwise there are none
    std::u16string lanFolder; ///< `Text1`; stored paths are put straight behind it, so it ends in a separator
};

/// What a running job may ask of whoever runs it: the main window, the command line, a test.
class JobHost : public platform::UiPump {
public:
    virtual bool stopRequested() = 0;                ///< asked between rows, never inside one
    virtual void log(std::u16string_view entry) = 0; ///< one entry; which end is up is the host's affair
    /// One entry in the place of all that the log shows.
    virtual void logAlone(std::u16string_view entry) { log(entry); }
    /// The progress line of the window (`Label1`). done and total are counts of rows.
    virtual void showProgress(std::u16string_view text, std::size_t done, std::size_t total) = 0;
    /// A label's text that tells what became of a row or of the run: shown like progress, and printed where nobody
    /// sees the label.
    virtual void showOutcome(std::u16string_view text, std::size_t done, std::size_t total) {
        showProgress(text, done, total);
    }
    virtual void message(std::u16string_view title, std::u16string_view text) = 0; ///< may wait for the user
    /// Whether a destructive step may be done. The window asks; the command line has --yes; else it is refused.
    virtual bool confirm(std::u16string_view question) {
        static_cast<void>(question);
        return false;
    }
    /// Something that the user should know and that is no part of the job's log: standard error, the status line.
    virtual void warning(std::u16string_view text) { log(text); }
    virtual PageLocation pages() = 0; ///< LAN switch and folder
    /// The caption of the button that started the job, from now on.
    virtual void setCaption(std::u16string_view caption) { static_cast<void>(caption); }
    /// The main window goes; the job runs on to its end, and the program ends with it.
    virtual void closeWindow() {}
};

} // namespace kelb::jobs
