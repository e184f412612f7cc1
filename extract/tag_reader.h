#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace kelb::extract {

/// A tag as it stands in a page: "<" at `open`, the next ">" at `close`.
struct Tag {
    std::size_t open = 0;
    std::size_t close = std::u16string_view::npos; ///< npos: no ">" follows
    std::u16string_view name;                      ///< without a leading "/"; "" also when it would hold a "<"
    bool closing = false;                          ///< it had a leading "/"
};

/// Finds the tags of a page one after the other, by marker search; a page full of "<" is walked once.
/// Keeps views of the page.
class TagReader {
public:
    explicit TagReader(std::u16string_view html) : html_(html) {}

    /// The first "<" at or behind `from`, which must not go back from call to call. No value without one.
    [[nodiscard]] std::optional<Tag> next(std::size_t from);

    /// Where the removal of a listed tag ends: behind its ">", or for the opening of a block behind the closing tag,
    /// or at the end of the page without one. Any tag whose name only begins with the block's closes it, too.
    [[nodiscard]] std::size_t removalEnd(const Tag& tag) const;

private:
    std::u16string_view html_;
    std::size_t close_ = 0; ///< the ">" found last
};

} // namespace kelb::extract
