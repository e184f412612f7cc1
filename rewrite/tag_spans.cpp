#include "rewrite/tag_spans.h"

namespace kelb::rewrite {

std::u16string withoutTags(std::u16string_view text) {
    std::u16string kept;
    kept.reserve(text.size());
    // What a removal joins holds no "<" of its own, so going on behind the ">" is the same as starting over.
    std::size_t from = 0;
    for (;;) {
        const std::size_t open = text.find(u'<', from);
        const std::size_t close = open == text.npos ? text.npos : text.find(u'>', open + 1);
        if (close == text.npos) {
            return kept.append(text.substr(from));
        }
        kept.append(text.substr(from, open - from));
        from = close + 1;
    }
}

} // namespace kelb::rewrite
