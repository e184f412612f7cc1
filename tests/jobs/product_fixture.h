#pragma once

#include "platform/text.h"
#include "tests/jobs/job_fixture.h"

#include <utility>
#include <vector>

namespace kelb::jobs {

/// The fields of wxKnowledge; code and name as wide as told.
inline std::u16string knowledgeFields(const std::u16string& width = u"255") {
    std::u16string fields = u"url varchar(255), TVCode varchar(" + width + u"), TVName varchar(" + width + u")";
    for (int i = 1; i <= 10; ++i) {
        fields += u", param" + platform::number(i) + u" varchar(255)";
    }
    return fields;
}

/// Product pages in numbered sub-folders.
class ProductTest : public JobTest {
protected:
    static constexpr std::u16string_view kFolder = u"X:\\shop";

    void save(const std::u16string& path, std::u16string_view html) {
        files.writeFile(std::u16string(kFolder) + u"\\" + path, platform::encode936(html));
    }

    void createKnowledge(std::u16string_view path) {
        execute(path, {u"create table wxKnowledge (" + knowledgeFields() + u")"});
    }

    using Parameters = std::vector<std::pair<std::u16string, std::u16string>>;

    /// A page of the portal: its table has two cells a row, with a heading before each.
    static std::u16string product(const std::u16string& title, const Parameters& parameters) {
        std::u16string html = u"<html><title>" + title +
                              u"</title><table><tr><td>导航</td></tr></table><TABLE class=\"p\">"
                              u"<tr><th>主体参数</th></tr>\r\n";
        for (const auto& [name, value] : parameters) {
            html += u"<TR><th>颜色</th><td>黑</td><th>" + name + u"</th><td> " + value + u" </td></TR>\r\n";
        }
        return html + u"</TABLE><!--" + std::u16string(200, u'-') + u"-->";
    }
};

} // namespace kelb::jobs
