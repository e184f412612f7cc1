#include "jobs/source_page.h"

#include "jobs/stored_page.h"
#include "platform/text.h"

#include <vector>

namespace kelb::jobs {

SourcePage sourcePage(std::u16string_view content, const PageLocation& location, PageFiles& files) {
    const std::u16string_view stored = platform::trimBlanks(content);
    SourcePage page;
    if (stored.empty()) {
        return page;
    }
    if (!canBePath(content) || stored.front() == u'<') {
        page.state = SourcePage::State::InRow;
        page.html = content;
        return page;
    }
    std::vector<std::u16string> places;
    if (!location.lanFolder.empty()) {
        places.push_back(PageFiles::path({true, location.lanFolder}, stored));
    }
    places.emplace_back(stored);
    for (const std::u16string& place : places) {
        page.path += page.path.empty() ? place : u"\n" + place;
        try {
            if (files.read(place, page.html)) {
                page.state = SourcePage::State::File;
                page.path = place;
                page.why.clear();
                return page;
            }
        } catch (const platform::FileError& failure) { // the other place may still have it
            page.why = failure.what();
        }
    }
    page.state = SourcePage::State::NoFile;
    return page;
}

} // namespace kelb::jobs
