#include "cli/commands.h"
#include "platform/utf8.h"
#include "segment/ClsFenCi.h"

#include <iostream>

namespace kelb::cli {
namespace {

class SegmentCommand final : public Command {
public:
    explicit SegmentCommand(CLI::App& kelb)
        : Command(
              kelb.add_subcommand("segment", "Cut Chinese text into words, a line of words for each line of text")) {
        declared().add_option("TEXT", texts_, "Lines of text [standard input]")->type_name("");
        declared().add_flag("--tags", tags_, "Put \"/\" and the part of speech behind words of the dictionary");
        declared().footer(
            "The dictionary is SogouLabDic.dic in the application folder: a word, its frequency and its part\n"
            "of speech a line, with a TAB between them, in code page 936.\n"
            "Example:\n"
            "  kelb --home examples/home segment --tags 电视机开机后黑屏");
    }

    int run(Program& program) override {
        segment::ClsFenCi fenCi(program.platform().files, program.platform().applicationFolder);
        const segment::WordDictionary::PassedOver& passed = fenCi.dictionary().passedOver();
        if (passed.duplicates + passed.longWords != 0 && !program.options().quiet) {
            std::cerr << "kelb: SogouLabDic.dic: " << passed.duplicates
                      << " words that are there twice (the first counts), " << passed.longWords
                      << " words of more than 7 characters (not used)\n";
        }
        for (const std::string& text : texts_) {
            print(fenCi, text);
        }
        if (texts_.empty()) {
            for (std::string line; std::getline(std::cin, line);) {
                print(fenCi, line);
            }
        }
        return kDone;
    }

private:
    void print(segment::ClsFenCi& fenCi, const std::string& text) {
        line_.clear();
        const std::u16string units = platform::fromUtf8(text);
        fenCi.segment(units, [this](const segment::Word& word) {
            line_ += line_.empty() ? "" : " ";
            platform::toUtf8(word.text, line_);
            if (tags_ && !word.partOfSpeech.empty()) {
                line_ += '/';
                platform::toUtf8(word.partOfSpeech, line_);
            }
        });
        std::cout << line_ << '\n';
    }

    std::vector<std::string> texts_;
    bool tags_ = false;
    std::string line_;
};

} // namespace

CommandPointer makeSegment(CLI::App& kelb) {
    return std::make_unique<SegmentCommand>(kelb);
}

} // namespace kelb::cli
