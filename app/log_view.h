#pragma once

#include <QPlainTextEdit>
#include <QTimer>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::app {

/// The job log: each new entry stands in front of the older ones, followed by a line break. Entries are kept whole;
/// what is on screen is brought up to date at most every 100 ms, in one piece, and ends after about 2,000 lines,
/// because a view that follows every entry costs 3 ms an entry.
class LogView final : public QPlainTextEdit {
public:
    explicit LogView(QWidget* parent = nullptr);

    void add(std::u16string_view entry);
    /// Brings the view up to date at once.
    void flush();
    void clearEntries();

    std::size_t entryCount() const noexcept { return ends_.size(); }
    /// Entry number `index` in the order of time.
    std::u16string_view entry(std::size_t index) const;
    /// Every entry, the newest first, each followed by CR LF.
    std::u16string wholeText() const;

private:
    std::u16string entries_;        ///< one after the other, oldest first
    std::vector<std::size_t> ends_; ///< where each of them ends
    std::size_t shown_ = 0;         ///< entries that the view has
    QTimer timer_;
};

} // namespace kelb::app
