#pragma once

#include "extract/user_names.h"
#include "platform/random.h"
#include "rewrite/ClsSmart.h"

#include <string>
#include <string_view>
#include <vector>

namespace kelb::extract {

/// Which page of its thread is looked at: only the first one holds the thread starter's post.
enum class ThreadPage { First, Later };

// Entries of a reason that tell why a page is no thread.
inline constexpr std::u16string_view kNoFloorMark = u"无楼层标志!";
inline constexpr std::u16string_view kNotAThread = u"split2Floors失败!";

/// Cuts title and article body out of one stored page of a Discuz! thread, by marker search (no HTML parser).
/// Texts are UTF-16; lengths count code units. A page without its markers is not an error: the result is "" and
/// sReason gains entries, each with "|" in front, behind what it already holds (ClsSmart's judgements come in front).
class Cls4Discuz {
public:
    /// `smart` remembers the post judged last, so the order in which pages are given matters. All three outlive this.
    Cls4Discuz(rewrite::ClsSmart& smart, const UserNames& names, platform::Random& random);

    static std::u16string extDiscuzTitle(std::u16string_view html, std::u16string& sReason);

    /// The thread starter's post as the case, the accepted replies as numbered notes. "" when the page has no floors
    /// or, on the first page, when the thread starter's post is rejected.
    std::u16string extDiscuzPageContent(std::u16string_view html, std::u16string& sReason, ThreadPage page);

    /// The message cell of one floor with its tags; "" if none.
    static std::u16string extFloorContent(std::u16string_view floor);

    /// The post without the quoted header of a reply and without the edit notice.
    static std::u16string killDiscuzMark(std::u16string_view text);

    /// The post blocks in page order; [0] of page 1 is the thread starter. The last block of a page without the
    /// closing marker is dropped. `success` may be true although a reason was added.
    static void split2Floors(std::u16string_view html, std::vector<std::u16string>& floors, std::u16string& sReason,
                             bool& success);

    /// A user name picked at random. Throws std::out_of_range without names.
    std::u16string giveRndName() const;

    /// The post without random ASCII noise.
    static std::u16string killGR(std::u16string_view text);

    /// The post from its first letter, digit or double-byte character on, with "<br>" for line breaks.
    static std::u16string killBeginGR(std::u16string_view text);

private:
    rewrite::ClsSmart& smart_;
    const UserNames& names_;
    platform::Random& random_;
};

} // namespace kelb::extract
