#include "jobs/job_summary.h"

#include "jobs/row_text.h"
#include "platform/number_text.h"
#include "platform/utf8.h"

#include <algorithm>

namespace kelb::jobs {
namespace {

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
    void addText(std::string_view key, std::string_view text) { add(key, jsonText(platform::fromUtf8(text))); }
    bool empty() const noexcept { return text_.empty(); }
    std::string done() const { return text_.empty() ? "{}" : text_ + "}"; }

private:
    std::string text_;
};

void addReasons(const JobSummary& summary, RowFate fate, std::string_view name, ObjectText& object) {
    ObjectText reasons;
    for (const auto& [reason, count] : summary.because(fate)) {
        reasons.add(reason, count);
    }
    if (!reasons.empty()) {
        object.add(name, reasons.done());
    }
}

} // namespace

void JobSummary::save(std::u16string_view row) {
    ++saved;
    count(RowFate::Saved, {}, row, {});
}

void JobSummary::skip(std::string_view reason, std::u16string_view row) {
    ++skipped;
    count(RowFate::Skipped, reason, row, {});
}

void JobSummary::fail(std::string_view reason, std::u16string_view row, std::u16string_view detail) {
    ++failed;
    count(RowFate::Failed, reason, row, detail);
}

void JobSummary::count(RowFate fate, std::string_view reason, std::u16string_view row, std::u16string_view detail) {
    auto group = std::find_if(groups.begin(), groups.end(), [&](const RowGroup& candidate) {
        return candidate.fate == fate && candidate.reason == reason;
    });
    if (group == groups.end()) {
        group = groups.insert(groups.end(), RowGroup{fate, std::string(reason), 0, {}});
    }
    ++group->count;
    if (group->rows.size() < kRowsTold) {
        group->rows.push_back({std::u16string(row), std::u16string(detail.substr(0, kDetailLength))});
    }
}

std::vector<std::pair<std::string, std::size_t>> JobSummary::because(RowFate fate) const {
    std::vector<std::pair<std::string, std::size_t>> reasons;
    for (const RowGroup& group : groups) {
        if (group.fate == fate && !group.reason.empty()) {
            reasons.emplace_back(group.reason, group.count);
        }
    }
    return reasons;
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
    object.add("seconds", platform::fixedText(summary.seconds, 3));
    addReasons(summary, RowFate::Skipped, "skippedBecause", object);
    addReasons(summary, RowFate::Failed, "failedBecause", object);
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
