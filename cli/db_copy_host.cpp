#include "cli/db_copy_host.h"

#include "cli/command.h"
#include "jobs/row_text.h"
#include "platform/utf8.h"

#include <algorithm>
#include <iostream>

namespace kelb::cli {

using jobs::jsonText;

namespace {

/// {"kind": "row", "table": "t", "page": 17, "row": 3, "field": "x", "reason": "…"}; what does not apply is missing.
std::string toJson(const jet::Loss& loss) {
    constexpr std::string_view kKinds[] = {"file", "table", "page", "row", "field", "index"};
    std::string json = "{\"kind\": \"" + std::string(kKinds[static_cast<std::size_t>(loss.kind)]) + "\"";
    if (!loss.table.empty()) {
        json += ", \"table\": " + jsonText(loss.table);
    }
    if (loss.kind != jet::Loss::Kind::Index) {
        json += ", \"page\": " + std::to_string(jet::raw(loss.page));
    }
    if (loss.row >= 0) {
        json += ", \"row\": " + std::to_string(loss.row);
    }
    if (!loss.name.empty()) {
        json += (loss.kind == jet::Loss::Kind::Index ? ", \"index\": " : ", \"field\": ") + jsonText(loss.name);
    }
    return json + ", \"reason\": " + jsonText(platform::fromUtf8(loss.reason)) + "}";
}

std::string toLine(const jet::Loss& loss) {
    std::string where = loss.table.empty() ? "" : "table " + platform::toUtf8(loss.table) + ", ";
    if (loss.kind != jet::Loss::Kind::Index) {
        where += "page " + std::to_string(jet::raw(loss.page)) + ", ";
    }
    if (loss.row >= 0) {
        where += "row " + std::to_string(loss.row) + ", ";
    }
    if (!loss.name.empty()) {
        where += (loss.kind == jet::Loss::Kind::Index ? "index " : "field ") + platform::toUtf8(loss.name) + ", ";
    }
    return "lost: " + where.substr(0, where.size() - 2) + ": " + loss.reason;
}

std::string counted(std::size_t count, const char* one, const char* many) {
    return std::to_string(count) + (count == 1 ? one : many);
}

} // namespace

CopyHost::CopyHost(Program& program, std::ostream& err, std::ostream* report)
    : err_(err), report_(report),
      progress_(ProgressLine::styleFor(program.options().quiet), program.platform().clock, err) {}

void CopyHost::print(const std::string& line) {
    progress_.clear();
    std::string shown = line;
    std::replace_if(
        shown.begin(), shown.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    err_ << shown << '\n';
}

void CopyHost::leftOut(std::string_view what, std::u16string_view name, std::string_view why) {
    print("not carried over: " + std::string(what) + " " + platform::toUtf8(name) + ": " + std::string(why));
}

void CopyHost::progress(std::u16string_view table, std::size_t done, std::size_t total) {
    if (interrupt_.interrupted()) {
        throw CopyStopped{};
    }
    progress_.update(table, done, total);
}

void CopyHost::lost(const jet::Loss& loss) {
    if (report_ != nullptr) {
        *report_ << toJson(loss) << '\n';
    } else {
        print(toLine(loss));
    }
}

void CopyHost::told(std::u16string_view table, std::string_view what) {
    print("table " + platform::toUtf8(table) + ": " + std::string(what));
}

int copyUnlessStopped(CopyHost& host, const std::function<int()>& copy) {
    try {
        return copy();
    } catch (const CopyStopped&) {
        host.finish();
        std::cerr << "stopped; nothing was written\n";
        return kStopped;
    }
}

std::string copySummary(std::u16string_view target, const jet::CopyCounts& counts) {
    return platform::toUtf8(target) + ": " + counted(counts.tables, " table, ", " tables, ") +
           counted(counts.rows, " row, ", " rows, ") + counted(counts.indexes, " index", " indexes");
}

} // namespace kelb::cli
