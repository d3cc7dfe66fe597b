// The settings, colours and texts that a start loads, and the file that it leaves.
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "support/digest.h"
#include "support/last_error.h"
#include "support/library.h"
#include "wexelxi.h"

namespace {

class Preferences : public testing::Test {
protected:
    Preferences() { setenv("WEXELXIDIR", folder.path().c_str(), 1); }

    void Start(const std::string &ini)
    {
        WriteWholeFile(path, ini);
        ASSERT_EQ(InitLib("/opt/host/bin/host", nullptr, 0), 0);
    }
    std::string Value(const char *section, const char *key)
    {
        char value[300];
        GetProfileString(section, key, "-", value, sizeof value);
        return value;
    }

    ScratchFolder folder;
    std::string path = folder.file("wexelxi.ini");
};

TEST_F(Preferences, FirstStartWritesTheFileAndTheSecondNothing)
{
    std::string expected = "[Setup]\r\nVersion=4\r\nBellLevel=100\r\n";
    for (size_t i = 0; i < 63; i++)
        expected +=
            "Color" + std::to_string(i + 1) + "=" + std::to_string(WinsysColArr[i]) + "\r\n";
    expected += "NoFreeLib=0\r\nTimerRate=50\r\n\r\n[Localize]\r\nLanguage=English\r\n"
                "\r\n[English]\r\n";
    for (size_t i = 0; i < 135; i++)
        expected += std::to_string(i + 1) + "=" + gDefaultStrings[i] + "\r\n";
    EXPECT_EQ(GetWinString(0), nullptr);
    for (int run = 0; run < 2; run++) {
        ASSERT_EQ(InitLib("/opt/host/bin/host", nullptr, 0), 0);
        EXPECT_EQ(ReadWholeFile(path), expected);
        for (uint32_t i = 0; i < 135; i++)
            EXPECT_STREQ(GetWinString(i), gDefaultStrings[i]);
        EXPECT_EQ(GetWinString(135), nullptr);
        EXPECT_EQ(GetWinStringUtf8(134), GetWinString(134));
        EXPECT_EQ(GetSysColor(56), 0x800000u);
        EXPECT_EQ(GetSysColor(63), 0u);
        EXPECT_EQ(gPrinterXMargin, 10);
        FreeLib();
        EXPECT_EQ(GetWinString(0), nullptr);
        // What the second start must not touch, byte for byte: a line that no key reads.
        expected += "[tail]\nx";
        WriteWholeFile(path, expected);
    }
}

TEST_F(Preferences, LoadsAndCorrects)
{
    const std::string text(300, 't');
    SetWinString(4, "Halt"); // wins over the file's
    Start(
        "[Setup]\nVersion=7\nBellLevel=12x\nColor1=5\nColor2=text\nColor63=4294967297\n"
        "NoFreeLib=2\nTimerRate=1001\nFileCaseMode=257\nUseOverride=1\nXPrinterMargin=none\n"
        "YPrinterMargin=1234567890\n\n\n[Localize]\nLanguage=Deutsch\n\n\n[Deutsch]\n1=Ja\n2=\n3=" +
        text + "\n");
    const std::pair<int64_t, int64_t> values[] = {{gVersion, 7},
                                                  {gBellLevel, 12},
                                                  {GetSysColor(0), 5},
                                                  {GetSysColor(1), 0},
                                                  {GetSysColor(2), 0x800000},
                                                  {GetSysColor(62), 1},
                                                  {GetSysColor(63), 0},
                                                  {gFileMode, 1},
                                                  {gUseOverride, 1},
                                                  {gPrinterXMargin, 0},
                                                  {gPrinterYMargin, 12345678}};
    for (const auto &[loaded, expected] : values)
        EXPECT_EQ(loaded, expected);
    const struct {
        const char *section, *key, *inFile;
    } rows[] = {{"Setup", "NoFreeLib", "0"}, {"Setup", "TimerRate", "50"},
                {"Setup", "Color3", "-"},    {"Deutsch", "2", "No"},
                {"Deutsch", "5", "Abort"},   {"Deutsch", "135", "Restore defaults"},
                {"English", "1", "-"}};
    for (const auto &row : rows)
        EXPECT_EQ(Value(row.section, row.key), row.inFile) << row.section << row.key;
    const std::string inForce[] = {"Ja", "No", text.substr(0, 254), "Cancel", "Halt", "Retry"};
    for (uint32_t i = 0; i < std::size(inForce); i++)
        EXPECT_EQ(GetWinString(i), inForce[i]);
    FreeLib();
}

TEST_F(Preferences, TextsCanBeReplaced)
{
    Start("");
    EXPECT_LAST_ERROR(SetWinString(0, "Aye"), ERROR_SUCCESS);
    EXPECT_LAST_ERROR(SetWinString(134, GetWinString(134)), ERROR_SUCCESS);
    EXPECT_LAST_ERROR(SetWinString(-1, "x"), kUnchanged);
    EXPECT_LAST_ERROR(SetWinString(135, "x"), kUnchanged);
    EXPECT_LAST_ERROR(SetWinString(5, nullptr), kUnchanged);
    EXPECT_STREQ(GetWinString(0), "Aye");
    EXPECT_STREQ(GetWinString(134), "Restore defaults");
    EXPECT_STREQ(GetWinString(5), "Retry");
    FreeLib();
}

TEST_F(Preferences, SwitchAndTimerRate)
{
    const struct {
        const char *before;
        int noFree, rate;
        const char *after; // empty: nothing is written
    } rows[] = {{"NoFreeLib=1\r\nTimerRate=1000\r\n", 1, 1000, ""},
                {"NoFreeLib=256\r\nTimerRate=1\r\n", 0, 1, ""},
                {"NoFreeLib=3\r\nTimerRate=4294967297\r\n", 0, 1, "NoFreeLib=0\r\nTimerRate=1\r\n"},
                {"NoFreeLib=0\r\nTimerRate=1001\r\n", 0, 1, "NoFreeLib=0\r\nTimerRate=1\r\n"},
                {"NoFreeLib=\r\n", 0, 1, "NoFreeLib=\r\nTimerRate=1\r\n"},
                {"", 0, 1, "NoFreeLib=0\r\nTimerRate=1\r\n"}};
    const std::string head = "[Setup]\r\nVersion=4\r\n";
    for (const auto &row : rows) {
        Start(head + row.before);
        EXPECT_EQ(gNoFreeLibrary, row.noFree) << row.before;
        EXPECT_EQ(gTimerRate, row.rate) << row.before;
        const std::string expected =
            head + (*row.after ? row.after : row.before) + "\r\n[Localize]";
        EXPECT_EQ(ReadWholeFile(path).substr(0, expected.size()), expected);
        FreeLib();
    }
}

// What the file lacks is written over no change of its own, whatever reads of it fail.
TEST_F(Preferences, LastErrorsAndTheCacheAreThoseOfTheLastStep)
{
    const auto load = [&](const std::string &ini) {
        TermIni();
        WriteWholeFile(path, ini);
        gLoadPref();
    };
    Start("");
    const std::string whole = ReadWholeFile(path);
    EXPECT_LAST_ERROR(load(whole), ERROR_SUCCESS);
    WriteWholeFile(path, "");
    EXPECT_EQ(Value("Setup", "Version"), "4") << "read last, from the cache";
    EXPECT_LAST_ERROR(load(whole.substr(0, whole.find("135="))), ERROR_SUCCESS);
    WriteWholeFile(path, "");
    EXPECT_EQ(Value("Setup", "Version"), "-") << "written last";
    const std::string noTimer = "[Setup]\r\nVersion=4\r\nNoFreeLib=0\r\n";
    EXPECT_LAST_ERROR(load(noTimer + whole.substr(whole.find("\r\n[Localize]"))), ERROR_SUCCESS);
    WriteWholeFile(path, "");
    EXPECT_EQ(Value("Setup", "Version"), "4") << "written, then read";
    std::filesystem::create_directory(folder.file("full"));
    std::filesystem::create_symlink("/dev/full", folder.file("full/wexelxi.ini"));
    SetWexelXiFolder(folder.file("full").c_str());
    EXPECT_LAST_ERROR(gLoadPref(), ERROR_GEN_FAILURE);
    SetWexelXiFolder(folder.file("none").c_str());
    gFreePref();
    EXPECT_LAST_ERROR(gLoadPref(), ERROR_FILE_NOT_FOUND);
    EXPECT_STREQ(GetWinString(134), "Restore defaults");
    EXPECT_FALSE(FileExists(folder.file("none")));
    FreeLib();
}

TEST(Colours, WidenTheGap)
{
    const auto widened = [](COLORREF color, COLORREF other) {
        gWidenColorGap(&color, other);
        return color;
    };
    EXPECT_EQ(widened(0x101010, 0x000000), 0xC0C0C0u) << "both are dark";
    EXPECT_EQ(widened(0x808080, 0x808080), 0x4E4E4Eu) << "downwards";
    EXPECT_EQ(widened(0xF0F0F0, 0xE0E0E0), 0xCECECEu) << "no room upwards";
    Digest digest;
    for (uint32_t channel = 0; channel < 256; channel++) {
        for (uint32_t other = 0; other < 256; other++)
            digest.Add(widened(channel * 0x010101, other * 0x010101),
                       widened(0xFF4FA000 | channel, 0x004B9000 | other));
    }
    EXPECT_EQ(digest.hex(), "b881dce806d667a2");
}

} // namespace
