#pragma once

#include "jet/journal.h"
#include "jet/recovery.h"

#include "tests/jet/verify_fixture.h"

#include <algorithm>
#include <string>
#include <vector>

namespace kelb::jet::testing {

inline const std::u16string kTarget = u"out.mdb";

/// Collects what a copy tells, a line each.
class Told final : public RecoveryObserver {
public:
    void leftOut(std::string_view what, std::u16string_view name, std::string_view) override {
        left += std::string(what) + " " + platform::toUtf8(name) + "\n";
    }
    void progress(std::u16string_view, std::size_t rows, std::size_t total) override {
        grows = grows && rows <= total && rows > done;
        done = rows;
    }
    void lost(const Loss& loss) override { losses.push_back(loss); }
    void told(std::u16string_view, std::string_view what) override { notes += std::string(what) + "\n"; }

    /// Losses of a kind.
    std::size_t count(Loss::Kind kind) const {
        return static_cast<std::size_t>(
            std::ranges::count_if(losses, [kind](const Loss& loss) { return loss.kind == kind; }));
    }
    std::string lossText() const {
        std::string text;
        for (const Loss& loss : losses)
            text += platform::toUtf8(loss.table) + " " + std::to_string(raw(loss.page)) + "/" +
                    std::to_string(loss.row) + " " + platform::toUtf8(loss.name) + ": " + loss.reason + "\n";
        return text;
    }

    std::string left, notes;
    std::vector<Loss> losses;
    std::size_t done = 0;
    bool grows = true; ///< the number of rows, never past the total
};

/// The lines of contentOf() in order: copying may place rows otherwise.
inline std::vector<std::string> sortedContent(Database& database) {
    std::vector<std::string> lines;
    const std::string text = contentOf(database);
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = text.find('\n', at);
        lines.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    std::ranges::sort(lines);
    return lines;
}

/// Files in memory with the bytes of a database.
class CopyMachine : public Machine {
public:
    explicit CopyMachine(const std::string& bytes) { files.writeFile(kPath, bytes); }

    CopyCounts compact() {
        const auto source = open(Pager::Access::Read);
        return compactDatabase(platform, *source, kTarget, told);
    }
    RecoveryCounts recover() { return recoverDatabase(platform, kPath, kTarget, told); }
    std::unique_ptr<Database> target(Pager::Access access = Pager::Access::Read) {
        return Database::open(platform, kTarget, {access, false});
    }
    bool leftNothing() {
        return !files.fileExists(kTarget) && !files.fileExists(kTarget + u".part") &&
               !files.fileExists(journalPath(kTarget + u".part"));
    }

    Told told;
};

} // namespace kelb::jet::testing
