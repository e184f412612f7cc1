#include "platform/code_page.h"
#include "platform/memory_file_system.h"
#include "platform/utf8.h"
#include "segment/ClsFenCi.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <random>

namespace kelb::segment {
namespace {

using testing::HasSubstr;
using Text = std::u16string;

class CountingPump final : public platform::UiPump {
public:
    void yield() override { ++yields; }
    int yields = 0;
};

class DictionaryFile : public testing::Test {
protected:
    void TearDown() override { files_.beforeOperation = nullptr; }

    void write(std::u16string_view text) { files_.writeFile(kPath, platform::encode936(text)); }
    Text read(std::u16string_view path) { return platform::decode936(files_.readFile(path)); }
    /// Lines "word=value", or "none" for no dictionary.
    Text load() const {
        const auto words = fenCi_.readSogouLabDic();
        return words ? show(*words) : u"none";
    }
    static Text show(const WordDictionary& words) {
        Text lines;
        for (std::size_t i = 0; i < words.size(); ++i) {
            const Text word(words.entry(i).word);
            lines += word + u"=" + words.value(word).value_or(u"?") + u";";
        }
        return lines;
    }
    std::string faultOf(std::u16string_view text) {
        write(text);
        try {
            return platform::toUtf8(load());
        } catch (const DictionaryError& error) {
            return error.what();
        }
    }

    static constexpr std::u16string_view kPath = u"/app/SogouLabDic.dic";
    platform::MemoryFileSystem files_;
    CountingPump pump_;
    ClsFenCi fenCi_{files_, u"/app"};
};

TEST_F(DictionaryFile, IsReadLineByLine) {
    struct Case {
        const char* fault;
        Text file, expected;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"words in the file's order", u"电视\t9\tN\n坏\t8\tV", u"电视=9\tN;坏=8\tV;"},
             {"no part of speech: the nearest line's before", u"甲\t1\tN\n乙\t2\t\n丙\t3\t\n丁\t4\tV\n戊\t5\t",
              u"甲=1\tN;乙=2\tN;丙=3\tN;丁=4\tV;戊=5\tV;"},
             {"none before", u"甲\t1\t\n乙\t2\tN", u"甲=1\t;乙=2\tN;"},
             {"seven units, and eight", u"一二三四五六七\t1\tN\n一二三四五六七八\t2\tV\n甲\t3\t",
              u"一二三四五六七=1\tN;甲=3\tN;"},
             {"units count, not bytes", u"一二三四五abc\t1\tN\n一二三四五ab\t1\tN\nabcdefgh\t1\tN\n",
              u"一二三四五ab=1\tN;"},
             {"a line longer than a glance",
              u"甲\t12345678901234567890123456789012\tN\n乙\t1\t12345678901234567890123456789012",
              u"甲=12345678901234567890123456789012\tN;乙=1\t12345678901234567890123456789012;"},
             {"a skipped line needs no fields", u"一二三四五六七八\n\t\n甲\t1\tN", u"甲=1\tN;"},
             {"empty lines", u"\n甲\t1\tN\n\n\n乙\t2\tV\n", u"甲=1\tN;乙=2\tV;"},
             {"a fourth field is dropped", u"甲\t1\tN\tx\ty\n乙\t2\t\tz", u"甲=1\tN;乙=2\tN;"},
             {"an empty frequency", u"甲\t\tN", u"甲=\tN;"},
             {"CR belongs to the column", u"甲\t1\tN\r\n乙\t2\t\r", u"甲=1\tN\r;乙=2\t\r;"},
             {"letter case counts", u"cpu\t1\tN\nCPU\t2\tN", u"cpu=1\tN;CPU=2\tN;"},
             {"of equal words the first; its twin's part of speech still carries on", u"甲\t1\tN\n甲\t2\tV\n乙\t3\t",
              u"甲=1\tN;乙=3\tV;"},
             {"no accepted line", u"\n一二三四五六七八\t1\tN\n", u"none"},
             {"nothing", u"", u"none"},
         }) {
        write(c.file);
        EXPECT_EQ(load(), c.expected) << c.fault;
    }
}

TEST_F(DictionaryFile, TellsWhatItPassedOver) {
    write(u"甲\t1\tN\n甲\t2\tN\n一二三四五六七八\t1\tN\n甲\t1\tN\n乙\t1\tN");
    const auto words = fenCi_.readSogouLabDic();
    ASSERT_TRUE(words);
    EXPECT_EQ(words->passedOver().duplicates, 2U);
    EXPECT_EQ(words->passedOver().longWords, 1U);
}

TEST_F(DictionaryFile, RefusesAWordWithoutItsFields) {
    EXPECT_THAT(faultOf(u"甲\t1\tN\n\n乙\t2\n丙\t3\tN"), HasSubstr("SogouLabDic.dic: line 3 has a word"));
    EXPECT_THAT(faultOf(u"甲"), HasSubstr("line 1"));
    EXPECT_THAT(faultOf(u"甲\t1\tN\n\r"), HasSubstr("line 2")) << "a CR alone is a word";
    files_.removeFile(kPath);
    EXPECT_THROW((void)load(), platform::FileError);
}

TEST_F(DictionaryFile, ComesBackByteForByte) {
    const Text text = u"电视机\t120\tN,\n修\t88\tV,\n一二三四五六七\t0\t\né①\t7\t\nCPU\t\tN";
    // An empty part of speech is written as what it stands for.
    const Text saved = u"电视机\t120\tN,\n修\t88\tV,\n一二三四五六七\t0\tV,\né①\t7\tV,\nCPU\t\tN";
    write(text);
    const auto first = fenCi_.saveSogouLabDic(*fenCi_.readSogouLabDic(), pump_);
    EXPECT_EQ(read(kPath), saved);
    EXPECT_EQ(first, u"/app/SogouLabDic1.dic");
    EXPECT_EQ(read(first), text);
    const std::string bytes = files_.readFile(kPath);
    const auto second = fenCi_.saveSogouLabDic(*fenCi_.readSogouLabDic(), pump_);
    EXPECT_EQ(files_.readFile(kPath), bytes) << "from then on nothing changes";
    EXPECT_EQ(second, u"/app/SogouLabDic2.dic");
    EXPECT_EQ(files_.readFile(second), bytes);
    EXPECT_EQ(pump_.yields, 2);
}

TEST_F(DictionaryFile, KeepsBytesThatDoNotDecode) {
    // A lead byte before a TAB, a pair that is not assigned, the lone bytes 0x80 and 0xFF.
    const std::string bytes = "\xB5\xE7\x81\t1\tN\n\xFE\xFE\t2\tN\n\x80\xFF\t3\tN";
    files_.writeFile(kPath, bytes);
    const auto words = fenCi_.readSogouLabDic();
    EXPECT_EQ(words->entry(0).word, u"电\uFFFD");
    EXPECT_EQ(words->size(), 3U);
    (void)fenCi_.saveSogouLabDic(*words, pump_);
    EXPECT_EQ(files_.readFile(kPath), bytes);
}

TEST_F(DictionaryFile, SavesWhatWasAdded) {
    write(u"甲\t1\tN\n一二三四五六七八\t2\tN");
    auto words = fenCi_.readSogouLabDic();
    EXPECT_TRUE(words->add(u"丁", u"4", u"V"));
    EXPECT_FALSE(words->add(u"甲", u"5", u"V")) << "there already";
    (void)fenCi_.saveSogouLabDic(*words, pump_);
    EXPECT_EQ(read(kPath), u"甲\t1\tN\n丁\t4\tV") << "the long word is gone";
    // The code page lacks 鿫 and would write É as é.
    for (const Text& bad : std::initializer_list<Text>{u"", u"一二三四五六七八", u"a\tb", u"a\nb", u"鿫", u"É"}) {
        EXPECT_THROW(words->add(bad, u"1", u"N"), std::invalid_argument) << platform::toUtf8(bad);
    }
    EXPECT_THROW(words->add(u"戊", u"1\t", u"N"), std::invalid_argument);
    EXPECT_THROW(words->add(u"戊", u"1", u"\n"), std::invalid_argument);
}

TEST_F(DictionaryFile, TakesTheFirstFreeNumber) {
    write(u"甲\t1\tN");
    const auto words = fenCi_.readSogouLabDic();
    files_.writeFile(u"/app/SogouLabDic1.dic", "");
    files_.writeFile(u"/app/SogouLabDic3.dic", "");
    EXPECT_EQ(fenCi_.saveSogouLabDic(*words, pump_), u"/app/SogouLabDic2.dic");
    EXPECT_EQ(fenCi_.saveSogouLabDic(*words, pump_), u"/app/SogouLabDic4.dic");
    for (int number = 5; number <= 32767; ++number) {
        files_.writeFile(u"/app/SogouLabDic" + platform::fromUtf8(std::to_string(number)) + u".dic", "");
    }
    EXPECT_THROW(fenCi_.saveSogouLabDic(*words, pump_), std::overflow_error);
    EXPECT_EQ(load(), u"甲=1\tN;");
}

TEST_F(DictionaryFile, NeedsTheOldFileToSave) {
    WordDictionary words;
    words.add(u"甲", u"1", u"N");
    EXPECT_THROW(fenCi_.saveSogouLabDic(words, pump_), platform::FileError);
    EXPECT_FALSE(files_.fileExists(kPath));
    EXPECT_FALSE(files_.fileExists(u"/app/SogouLabDic1.dic"));
}

TEST_F(DictionaryFile, AFailedSaveLeavesTheOldOne) {
    const Text old = u"甲\t1\tN", changed = old + u"\n乙\t2\tN";
    bool saved = false;
    for (int failing = 1; !saved; ++failing) {
        write(old);
        auto words = fenCi_.readSogouLabDic();
        words->add(u"乙", u"2", u"N");
        int operations = 0;
        files_.beforeOperation = [&](std::string_view operation, std::u16string_view path) {
            if (++operations == failing) {
                throw platform::FileError(platform::FileError::Kind::NoSpace, operation, path, 0, "full");
            }
        };
        try {
            (void)fenCi_.saveSogouLabDic(*words, pump_);
            saved = true;
        } catch (const platform::FileError&) {
            saved = false;
        }
        files_.beforeOperation = nullptr;
        EXPECT_EQ(read(kPath), saved ? changed : old) << "operation " << failing;
        ASSERT_LT(failing, 20);
    }
}

TEST(WordDictionaryIndex, AgreesWithAMap) {
    std::mt19937 random(20260405);
    std::map<Text, Text> model;
    WordDictionary words;
    for (int i = 0; i < 20'000; ++i) {
        Text word;
        for (std::size_t size = 1 + random() % kLongestWord; word.size() < size;) {
            word.push_back(static_cast<char16_t>(u'一' + random() % 12));
        }
        const Text frequency = platform::fromUtf8(std::to_string(i));
        EXPECT_EQ(words.add(word, frequency, u"N"), model.emplace(word, frequency + u"\tN").second);
    }
    EXPECT_EQ(words.size(), model.size());
    for (const auto& [word, value] : model) {
        EXPECT_EQ(words.value(word), value);
        EXPECT_EQ(words.value(word + u"一").has_value(), model.contains(word + u"一"));
        EXPECT_FALSE(words.value(word + u"a"));
    }
}

} // namespace
} // namespace kelb::segment
