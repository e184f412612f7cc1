#include "cli/commands.h"
#include "platform/file_failures.h"
#include "platform/path_map.h"
#include "platform/text.h"
#include "platform/utf8.h"
#include "store/page_counter.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <string>

namespace kelb::cli {
namespace {

/// What "show" and "reset" share: the folder, and its path with a separator at the end.
class CounterCommand : public Command {
protected:
    CounterCommand(CLI::App& counter, const std::string& name, const std::string& purpose)
        : Command(counter.add_subcommand(name, purpose)) {
        declared()
            .add_option("DIR", folder_, "The folder whose sub-folders 0, 1, 2 … hold the pages")
            ->required()
            ->type_name("");
    }

    /// Throws platform::FileError when there is no such folder.
    std::u16string base(platform::FileSystem& files) const {
        std::u16string folder = platform::fromUtf8(folder_);
        if (!files.folderExists(folder)) {
            throw platform::notFound("look for", folder);
        }
        return platform::joinPath(folder, u"");
    }

private:
    std::string folder_;
};

class CounterShow final : public CounterCommand {
public:
    explicit CounterShow(CLI::App& counter) : CounterCommand(counter, "show", "Tell where the next walk goes on") {
        declared().add_flag("--json", json_, "One JSON object");
    }

    int run(Program& program) override {
        platform::FileSystem& files = program.platform().files;
        const std::u16string folder = base(files);
        const std::optional<store::PagePlace> stored = store::readPlace(files, folder);
        const store::PagePlace place = stored.value_or(store::PagePlace());
        const std::u16string subFolder = folder + platform::number(place.folderNo);
        const bool over = !files.folderExists(subFolder);
        const std::size_t count = over ? 0 : files.listFiles(subFolder).size();
        if (json_) {
            const nlohmann::ordered_json answer = {{"counterFile", stored.has_value()},
                                                   {"folder", place.folderNo},
                                                   {"file", place.fileNo},
                                                   {"filesInFolder", count},
                                                   {"over", over}};
            std::cout << answer.dump() << '\n';
            return kDone;
        }
        if (!stored) {
            std::cout << "no " << platform::toUtf8(store::kCounterFile) << " yet: the walk begins with sub-folder 0\n";
        } else if (over) {
            std::cout << "the walk is over: sub-folder " << place.folderNo << " is not there\n";
        } else {
            std::cout << "sub-folder " << place.folderNo << " (" << count << " files), " << place.fileNo
                      << " of them read\n";
        }
        return kDone;
    }

private:
    bool json_ = false;
};

class CounterReset final : public CounterCommand {
public:
    explicit CounterReset(CLI::App& counter)
        : CounterCommand(counter, "reset", "Let the next walk begin with sub-folder 0") {}

    int run(Program& program) override {
        platform::FileSystem& files = program.platform().files;
        store::writePlace(files, base(files), {});
        return kDone;
    }
};

} // namespace

std::vector<CommandPointer> makeCounterCommands(CLI::App& kelb) {
    CLI::App& counter = *kelb.add_subcommand("counter", "The place of a walk over a folder of pages");
    counter.require_subcommand(1);
    counter.footer("param-import --folder DIR keeps its place in DIR/CounterResp.txt.\n"
                   "Example:\n"
                   "  kelb counter show /crawl/products");
    std::vector<CommandPointer> commands;
    commands.push_back(std::make_unique<CounterShow>(counter));
    commands.push_back(std::make_unique<CounterReset>(counter));
    return commands;
}

} // namespace kelb::cli
