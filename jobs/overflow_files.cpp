#include "jobs/overflow_files.h"

#include "jobs/row_text.h"
#include "platform/clock.h"
#include "platform/file_system.h"
#include "platform/path_map.h"

namespace kelb::jobs {

void warnWithoutOverflowFolder(platform::Platform& platform, JobHost& host) {
    const std::u16string folder = platform.applicationFolder + u"\\TestRec";
    if (!platform.files.folderExists(folder)) {
        host.warning(u"There is no folder " + folder +
                     u": make it, or the first article that is too long ends the job.");
    }
}

void OverflowFiles::write(std::u16string_view text, std::u16string_view caption, const OverflowOrigin& origin,
                          platform::UiPump& events) {
    const std::size_t replacedBefore = store_.replacedCharacters();
    store_.store2Disk(text, caption, u"", events);
    ++summary_.overflowFiles;
    summary_.replacedCharacters += store_.replacedCharacters() - replacedBefore;

    const std::u16string index = platform_.applicationFolder + u"\\TestRec\\index.csv";
    std::string line = platform_.files.fileExists(index) ? "" : "\xEF\xBB\xBFname,job,url,title,length,time\r\n";
    appendCsvText(platform::fileName(store_.lastStoredFile()), line);
    line += "," + summary_.job + ",";
    appendCsvText(origin.url, line);
    line += ",";
    appendCsvText(origin.title, line);
    line += "," + std::to_string(text.size()) + "," + platform::toIso(platform_.clock.now()) + "\r\n";
    platform_.files.appendFile(index, line);
}

} // namespace kelb::jobs
