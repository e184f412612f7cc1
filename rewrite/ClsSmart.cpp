#include "rewrite/ClsSmart.h"

#include "platform/code_page.h"
#include "platform/path_map.h"

namespace kelb::rewrite {

ClsSmart::ClsSmart(platform::FileSystem& files, std::u16string_view applicationFolder)
    : files_(files),
      adMarks_(platform::decode936(files.readFile(platform::joinPath(applicationFolder, u"ADMarks.txt")))) {}

} // namespace kelb::rewrite
