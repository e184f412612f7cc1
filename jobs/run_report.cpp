#include "jobs/run_report.h"

#include "jobs/row_reasons.h"
#include "platform/number_text.h"
#include "platform/utf8.h"

#include <algorithm>
#include <array>

namespace kelb::jobs {
namespace {

constexpr std::string_view kStyle = R"(<style>
:root{color-scheme:light dark;--saved:#2e7d32;--skipped:#b07d00;--failed:#c62828;--line:#8884}
body{font:16px/1.5 system-ui,sans-serif;max-width:60rem;margin:2rem auto;padding:0 1rem}
h1{font-size:1.5rem;margin:0}
p.note{border-left:4px solid var(--skipped);padding:.3rem .8rem}
p.error{border-left:4px solid var(--failed);padding:.3rem .8rem;white-space:pre-wrap}
.figures{display:flex;flex-wrap:wrap;gap:1.5rem;margin:1.2rem 0;padding:0;list-style:none}
.figures b{display:block;font-size:1.6rem;line-height:1.2;font-variant-numeric:tabular-nums}
summary{display:grid;grid-template-columns:1rem minmax(12rem,22rem) 4rem 1fr;gap:.8rem;align-items:center;cursor:pointer;
padding:.3rem 0;border-bottom:1px solid var(--line)}
summary::before{content:"▸"}details[open]>summary::before{content:"▾"}
summary .n{text-align:right;font-variant-numeric:tabular-nums}
.bar{display:block;height:1rem;border-radius:2px;min-width:2px}
.saved{background:var(--saved)}.skipped{background:var(--skipped)}.failed{background:var(--failed)}
table{border-collapse:collapse;margin:.5rem 0 1.2rem;width:100%}
td{border-bottom:1px solid var(--line);padding:.15rem .5rem;vertical-align:top;overflow-wrap:anywhere}
td:first-child{text-align:right;color:#888;width:3rem}
small{color:#888}
</style>
)";

struct FateText {
    std::string_view style, name;
};
constexpr std::array<FateText, 3> kFates{{{"saved", "saved"}, {"skipped", "passed over"}, {"failed", "rejected"}}};

const FateText& textOf(RowFate fate) {
    return kFates[static_cast<std::size_t>(fate)];
}

std::string escaped(std::string_view text) {
    std::string html;
    html.reserve(text.size());
    for (const char c : text) {
        switch (c) {
        case '&':
            html += "&amp;";
            break;
        case '<':
            html += "&lt;";
            break;
        case '>':
            html += "&gt;";
            break;
        case '"':
            html += "&quot;";
            break;
        default:
            html += c;
        }
    }
    return html;
}

std::string escaped(std::u16string_view text) {
    return escaped(platform::toUtf8(text));
}

class Page {
public:
    explicit Page(const JobSummary& summary) : summary_(summary) {}

    std::string make(const RunCircumstances& run) {
        const std::string title = escaped("kelb " + summary_.job);
        html_ = "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n"
                "<meta name=\"viewport\" content=\"width=device-width\"><title>" +
                title + "</title>\n";
        html_ += kStyle;
        html_ += "</head><body>\n<h1>" + title + "</h1>\n<p><small>" + platform::toIso(run.begun);
        if (!summary_.source.table.empty()) {
            html_ += " · rows of " + escaped(summary_.source.table) + " in " + escaped(summary_.source.database);
        }
        html_ += "</small></p>\n";
        addRemarks(run);
        addFigures();
        addGroups();
        html_ += "</body></html>\n";
        return std::move(html_);
    }

private:
    void addRemarks(const RunCircumstances& run) {
        const auto add = [this](std::string_view style, std::string_view text) {
            html_ += "<p class=\"" + std::string(style) + "\">" + escaped(text) + "</p>\n";
        };
        if (!run.error.empty()) {
            add("error", "The run ended with an error: " + std::string(run.error));
        }
        if (summary_.stopped) {
            add("note", "Stopped on request: the rows behind the last one told here were not looked at.");
        }
        if (summary_.dryRun) {
            add("note", "Dry run: no row and no file was changed.");
        }
        if (!summary_.note.empty()) {
            add("note", summary_.note);
        }
    }

    void addFigures() {
        html_ += "<ul class=\"figures\">\n";
        addFigure(summary_.rows, "rows");
        addFigure(summary_.saved, "saved");
        addFigure(summary_.skipped, "passed over");
        addFigure(summary_.failed, "rejected");
        const auto addUnlessNone = [this](std::size_t number, std::string_view name) {
            if (number > 0) {
                addFigure(number, name);
            }
        };
        addUnlessNone(summary_.deletedRows, "rows deleted");
        addUnlessNone(summary_.deletedFiles, "files deleted");
        addUnlessNone(summary_.overflowFiles, "files in TestRec");
        addUnlessNone(summary_.replacedCharacters, "characters replaced by ?");
        for (const auto& [name, number] : summary_.counts) {
            addFigure(number, name);
        }
        html_ += "<li><b>" + platform::fixedText(summary_.seconds, summary_.seconds < 10 ? 2 : 0) +
                 "</b>seconds</li>\n</ul>\n";
    }

    void addFigure(std::size_t number, std::string_view name) {
        html_ += "<li><b>" + std::to_string(number) + "</b>" + escaped(name) + "</li>\n";
    }

    void addGroups() {
        std::vector<const RowGroup*> groups;
        std::size_t most = 1;
        for (const RowGroup& group : summary_.groups) {
            groups.push_back(&group);
            most = std::max(most, group.count);
        }
        std::stable_sort(groups.begin(), groups.end(),
                         [](const RowGroup* a, const RowGroup* b) { return shownBefore(*a, *b); });
        for (const RowGroup* group : groups) {
            addGroup(*group, most);
        }
    }

    void addGroup(const RowGroup& group, std::size_t most) {
        const FateText& fate = textOf(group.fate);
        const double percent = 100 * static_cast<double>(group.count) / static_cast<double>(most);
        html_ += "<details><summary><span>" + std::string(fate.name);
        if (!group.reason.empty()) {
            html_ += ": " + escaped(meaningOf(group.reason)) + " <small>" + escaped(group.reason) + "</small>";
        }
        html_ += "</span><span class=\"n\">" + std::to_string(group.count) + "</span><span><span class=\"bar " +
                 std::string(fate.style) + "\" style=\"width:" + platform::fixedText(percent, 1) +
                 "%\"></span></span></summary>\n<table>\n";
        std::size_t number = 0;
        for (const VisitedRow& row : group.rows) {
            html_ += "<tr><td>" + std::to_string(++number) + "</td><td>";
            addName(row.name);
            if (!row.detail.empty()) {
                html_ += "<br><small>" + escaped(row.detail) + "</small>";
            }
            html_ += "</td></tr>\n";
        }
        html_ += "</table>\n";
        if (group.count > group.rows.size()) {
            html_ += "<p><small>and " + std::to_string(group.count - group.rows.size()) + " more</small></p>\n";
        }
        html_ += "</details>\n";
    }

    /// Only addresses of the web become links: a crawled row may name anything.
    void addName(const std::u16string& name) {
        const std::string text = escaped(name);
        if (name.starts_with(u"http://") || name.starts_with(u"https://")) {
            html_ += "<a rel=\"noopener noreferrer\" href=\"" + text + "\">" + text + "</a>";
        } else {
            html_ += text;
        }
    }

    const JobSummary& summary_;
    std::string html_;
};

} // namespace

bool shownBefore(const RowGroup& a, const RowGroup& b) noexcept {
    return a.fate != b.fate ? a.fate < b.fate : a.count > b.count;
}

std::string reportPage(const JobSummary& summary, const RunCircumstances& run) {
    return Page(summary).make(run);
}

} // namespace kelb::jobs
