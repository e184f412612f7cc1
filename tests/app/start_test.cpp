#include "app/start_options.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

namespace kelb::app {
namespace {

/// The built program, started in an application folder of the test's own.
class ProgramStart : public testing::Test {
protected:
    struct Ending {
        int status; ///< -1: it did not end by itself in time, or crashed
        QString output;
    };
    void put(const char* name, const QByteArray& bytes) {
        QFile file(home.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    Ending start(const QStringList& arguments, const QString& platformName = "offscreen") {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("XDG_CONFIG_HOME", home.filePath("config"));
        environment.insert("XDG_RUNTIME_DIR", home.path());
        environment.insert("KELB_HOME", home.path());
        environment.insert("LSAN_OPTIONS", "detect_leaks=0");
        for (const char* display : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
            environment.remove(display);
        }
        if (!platformName.isEmpty()) {
            environment.insert("QT_QPA_PLATFORM", platformName);
        }
        process.setProcessEnvironment(environment);
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(KELB_EXTRACTOR, arguments);
        const bool ended = process.waitForFinished(60'000);
        if (!ended) {
            process.kill();
            process.waitForFinished();
        }
        return {ended && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                QString::fromUtf8(process.readAll())};
    }
    QTemporaryDir home;
};

TEST_F(ProgramStart, OpensTheWindowAndEnds) {
    put("userNames.txt", "a|b");
    const Ending ending = start({"--quit-after-paint"});
    EXPECT_EQ(ending.status, 0) << ending.output.toStdString();
}

TEST_F(ProgramStart, WithoutUserNamesTheWindowDoesNotOpen) {
    const Ending ending = start({"--quit-after-paint"});
    EXPECT_EQ(ending.status, 1);
    EXPECT_TRUE(ending.output.startsWith("[文件未找到] ")) << ending.output.toStdString();
    EXPECT_TRUE(ending.output.contains("userNames.txt"));
}

TEST_F(ProgramStart, MissingAdMarksDoNotKeepTheWindowShut) {
    put("userNames.txt", "a");
    EXPECT_EQ(start({"--quit-after-paint"}).status, 0); // they are read by the first job that needs them
}

TEST_F(ProgramStart, WithoutADisplayItSaysSoInsteadOfCrashing) {
    put("userNames.txt", "a");
    const Ending ending = start({}, QString());
    EXPECT_EQ(ending.status, 1);
    EXPECT_TRUE(ending.output.contains("没有可用的显示器")) << ending.output.toStdString();
}

TEST_F(ProgramStart, ASettingThatIsNoNumberIsNamed) {
    put("userNames.txt", "a");
    put("Kelb.ini", "[Safety]\r\nmaxDeletePercent=viel\r\n");
    const Ending ending = start({"--quit-after-paint"});
    EXPECT_EQ(ending.status, 2);
    EXPECT_TRUE(ending.output.contains("[Safety] maxDeletePercent")) << ending.output.toStdString();
}

TEST_F(ProgramStart, ANamedFolderOrFileMustBeThere) {
    EXPECT_EQ(start({"--home", home.filePath("none")}).status, 1);
    const Ending ending = start({"--ini=" + home.filePath("other.ini")});
    EXPECT_EQ(ending.status, 1);
    EXPECT_TRUE(ending.output.contains("other.ini")) << ending.output.toStdString();
}

TEST_F(ProgramStart, WrongUsageNeedsNoDisplayToBeTold) {
    const Ending wrong = start({"--hom"}, QString());
    EXPECT_EQ(wrong.status, 2);
    EXPECT_TRUE(wrong.output.contains("--hom"));
    EXPECT_EQ(start({"--version"}, QString()).status, 0);
    EXPECT_TRUE(start({"--help"}, QString()).output.contains("--home"));
}

struct OptionsCase {
    const char* name;
    QStringList arguments;
    const char* fault; ///< nullptr when they are understood
    const char* home;
};
class StartOptionsTest : public testing::TestWithParam<OptionsCase> {};

TEST_P(StartOptionsTest, AreRead) {
    QString fault;
    const std::optional<StartOptions> options = readStartOptions(GetParam().arguments, fault);
    ASSERT_EQ(options.has_value(), GetParam().fault == nullptr);
    if (options) {
        EXPECT_EQ(options->home, GetParam().home);
    } else {
        EXPECT_EQ(fault, GetParam().fault);
    }
}

INSTANTIATE_TEST_SUITE_P(CommandLines, StartOptionsTest,
                         testing::ValuesIn<OptionsCase>({
                             {"none", {}, nullptr, ""},
                             {"two_words", {"--home", "/a b", "--version"}, nullptr, "/a b"},
                             {"one_word_with_equals", {"--home=/a=b"}, nullptr, "/a=b"},
                             {"value_missing", {"--view", "x.htm", "--home"}, "--home", ""},
                             {"value_empty", {"--ini="}, "--ini=", ""},
                             {"switch_with_value", {"--help=1"}, "--help=1", ""},
                             {"stray_word", {"Comb.mdb"}, "Comb.mdb", ""},
                         }),
                         [](const auto& each) { return std::string(each.param.name); });

} // namespace
} // namespace kelb::app
