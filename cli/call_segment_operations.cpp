#include "cli/call_operations.h"

namespace kelb::cli {

std::vector<CallOperation> segmentOperations() {
    return {
        {"ClsFenCi.splitPrepare", {"text"}, {}, ofText<segment::ClsFenCi::splitPrepare>},
        {"ClsFenCi.segment",
         {"text"},
         {"words", "partsOfSpeech"},
         [](CallObjects& objects, const CallArguments& given) {
             const std::u16string text = given.text(0);
             std::vector<std::u16string> words, partsOfSpeech;
             objects.fenCi().segment(text, [&](const segment::Word& word) {
                 words.emplace_back(word.text);
                 partsOfSpeech.emplace_back(word.partOfSpeech);
             });
             return answer(words.size(), words, partsOfSpeech);
         }},
    };
}

} // namespace kelb::cli
