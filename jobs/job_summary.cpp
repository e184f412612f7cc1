#include "jobs/job_summary.h"

#include "jobs/row_text.h"
#include "platform/utf8.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace kelb::jobs {
namespace {

std::string withThreeDigits(double seconds) {
    std::array<char, 64> digits{};
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), seconds, std::chars_format::fixed, 3).ptr;
    return {digits.data(), end};
}

/// Members of one JSON object.
class ObjectText {
public:
    void add(std::string_view key, std::string_view json) {
        text_ += text_.empty() ? "{\"" : ", \"";
        text_ += key;
        text_ += "\": ";
        text_ += json;
    }
    void add(std::string_view key, std::size_t number) { add(key, std::to_string(number)); }
    void addText(std::string_view key, std::string_view text) {
        std::string json;
        appendJsonText(platform::fromUtf8(text), json);
        add(key, json);
    }
    std::string done() const { return text_.empty() ? "{}" : text_ + "}"; }

private:
    std::string text_;
};

} // namespace

void JobSummary::skip(std::string_view reason) {
    ++skipped;
    const auto known = std::find_if(skippedBecause.begin(), skippedBecause.end(),
                                    [reason](const auto& count) { return count.first == reason; });
    if (known == skippedBecause.end()) {
        skippedBecause.emplace_back(reason, 1);
    } else {
        ++known->second;
    }
}

std::string toJson(const JobSummary& summary) {
    ObjectText object;
    object.addText("job", summary.job);
    object.add("rows", summary.rows);
    object.add("saved", summary.saved);
    object.add("skipped", summary.skipped);
    object.add("failed", summary.failed);
    object.add("deletedRows", summary.deletedRows);
    object.add("deletedFiles", summary.deletedFiles);
    object.add("overflowFiles", summary.overflowFiles);
    object.add("seconds", withThreeDigits(summary.seconds));
    if (!summary.skippedBecause.empty()) {
        ObjectText reasons;
        for (const auto& [reason, count] : summary.skippedBecause) {
            reasons.add(reason, count);
        }
        object.add("skippedBecause", reasons.done());
    }
    for (const auto& [name, count] : summary.counts) {
        object.add(name, count);
    }
    if (summary.replacedCharacters != 0) {
        object.add("replacedCharacters", summary.replacedCharacters);
    }
    if (summary.stopped) {
        object.add("stopped", "true");
    }
    if (summary.dryRun) {
        object.add("dryRun", "true");
    }
    if (!summary.note.empty()) {
        object.addText("note", summary.note);
    }
    return object.done();
}

} // namespace kelb::jobs
