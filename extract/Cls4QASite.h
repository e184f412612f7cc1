#pragma once

#include "extract/user_names.h"
#include "platform/random.h"
#include "rewrite/ClsSmart.h"

#include <string>
#include <string_view>

namespace kelb::extract {

/// Reads the pages of one question-and-answer site: title, question, and the answers that are worth keeping, each under
/// a user name drawn by lot, so that the result reads as a conversation. Searches mind case; lengths count UTF-16 code
/// units; what is not found is "".
class Cls4QASite {
public:
    /// All three outlive this. `smart` remembers the answer judged last, so the order of pages matters.
    Cls4QASite(rewrite::ClsSmart& smart, const UserNames& names, platform::Random& random)
        : smart_(smart), names_(names), random_(random) {}

    /// The heading of the article block. One that begins more than 20 units behind the block's start or takes more than
    /// 100 is not the article's own.
    static std::u16string extQTitle(std::u16string_view sHtml);
    /// The question's HTML: what stands between the first two closing tags of the article's body.
    static std::u16string extQContent(std::u16string_view sHtml);
    /// Of the first 20 answers those worth keeping, each as name, "：", answer and three line ends.
    /// Throws std::out_of_range when one is to be credited and there are no names.
    std::u16string extAContent(std::u16string_view sHtml);
    /// A user name; never the last one unless it is the only one. Throws std::out_of_range without names.
    std::u16string giveRndName() { return names_.giveRndName(random_); }

private:
    bool isWorthKeeping(std::u16string_view answer);

    rewrite::ClsSmart& smart_;
    const UserNames& names_;
    platform::Random& random_;
};

} // namespace kelb::extract
