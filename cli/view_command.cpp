#include "cli/commands.h"
#include "jobs/job_error.h"
#include "platform/file_system.h"
#include "platform/run_program.h"
#include "platform/utf8.h"

namespace kelb::cli {
namespace {

constexpr std::u16string_view kWindowProgram = u"KelbExtractor";

/// The page viewer is a window, and this program knows none: it starts the other one, which lies beside it.
class ViewCommand final : public Command {
public:
    explicit ViewCommand(CLI::App& kelb)
        : Command(kelb.add_subcommand("view", "Open a saved page in the page viewer (needs a display)")) {
        declared()
            .add_option("FILE", page_, "The saved page; read in code page 936 unless it tells otherwise")
            ->required()
            ->type_name("");
        declared().footer("The viewer is a window of KelbExtractor, which must lie beside this program.\n"
                          "Example:\n"
                          "  kelb view /crawl/forum/thread-1001-1-1.htm");
    }

    int run(Program& program) override {
        platform::FileSystem& files = program.platform().files;
        if (const std::u16string page = platform::fromUtf8(page_); !files.fileExists(page)) {
            throw jobs::JobError("there is no page file " + page_);
        }
        const std::u16string window =
            platform::joinPath(platform::executableFolder(), platform::programFile(kWindowProgram));
        if (!files.fileExists(window)) {
            throw jobs::JobError("the page viewer belongs to the program KelbExtractor, which is not at " +
                                 platform::toUtf8(window) + "; build or install it with the window");
        }
        std::vector<std::string> arguments{"--view=" + page_,
                                           "--home=" + platform::toUtf8(program.platform().applicationFolder)};
        if (!program.options().ini.empty()) {
            arguments.push_back("--ini=" + program.options().ini);
        }
        return platform::runProgram(window, arguments);
    }

private:
    std::string page_;
};

} // namespace

CommandPointer makeView(CLI::App& kelb) {
    return std::make_unique<ViewCommand>(kelb);
}

} // namespace kelb::cli
