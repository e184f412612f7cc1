#include "cli/file_streams.h"
#include "platform/memory_file_system.h"

#include <gtest/gtest.h>

#include <string>

namespace kelb::cli {
namespace {

class FileStreams : public testing::Test {
protected:
    void TearDown() override { files_.beforeOperation = nullptr; }
    void failEvery(std::string_view wanted) {
        files_.beforeOperation = [wanted](std::string_view operation, std::u16string_view path) {
            if (operation == wanted) {
                throw platform::FileError(platform::FileError::Kind::NoSpace, operation, path, 0, "full");
            }
        };
    }
    platform::MemoryFileSystem files_;
};

TEST_F(FileStreams, CarryMoreThanTheirBuffer) {
    std::string bytes;
    for (int line = 0; line < 40'000; ++line) {
        bytes += std::to_string(line) + "\n";
    }
    FileWriter writer(files_, u"/out");
    writer << bytes;
    writer.finish();
    EXPECT_EQ(files_.readFile(u"/out"), bytes);
    EXPECT_FALSE(files_.fileExists(u"/out.part"));
    FileReader reader(files_, u"/out");
    int line = 0;
    for (std::string text; std::getline(reader, text); ++line) {
        ASSERT_EQ(text, std::to_string(line));
    }
    EXPECT_EQ(line, 40'000);
}

TEST_F(FileStreams, TheFileAppearsWhole) {
    files_.writeFile(u"/out", "old");
    files_.writeFile(u"/out.part", "left behind by a run that was cut short");
    {
        FileWriter writer(files_, u"/out");
        writer << "half" << std::flush;
    }
    EXPECT_EQ(files_.readFile(u"/out"), "old");
    FileWriter writer(files_, u"/out");
    writer << "new";
    writer.finish();
    EXPECT_EQ(files_.readFile(u"/out"), "new");
}

TEST_F(FileStreams, PassOnWhatTheFileThrows) {
    EXPECT_THROW(FileReader(files_, u"/none"), platform::FileError);
    files_.writeFile(u"/in", "a\n");
    FileReader reader(files_, u"/in");
    FileWriter writer(files_, u"/out");
    failEvery("read");
    std::string line;
    EXPECT_THROW(std::getline(reader, line), platform::FileError);
    failEvery("write");
    EXPECT_THROW(writer << std::string(100'000, 'a') << std::flush, platform::FileError);
    files_.beforeOperation = nullptr;
    FileWriter other(files_, u"/other");
    other << "a";
    failEvery("rename");
    EXPECT_THROW(other.finish(), platform::FileError);
    EXPECT_FALSE(files_.fileExists(u"/other"));
}

} // namespace
} // namespace kelb::cli
