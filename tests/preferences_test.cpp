// The settings, colours and texts that a start loads, and the file that it leaves.
#include <cstring>
#include <gtest/gtest.h>
#include <string>

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

TEST_F(Preferences, TheFileIsDroppedFromTheCacheAsByItsLastWrite)
{
    ASSERT_EQ(InitLib("/opt/host/bin/host", nullptr, 0), 0);
    WriteWholeFile(path, "[s]\nk=1\n");
    EXPECT_EQ(Value("s", "k"), "1");
    FreeLib();
}

TEST_F(Preferences, LoadsAndCorrects)
{
    const std::string text(300, 't');
    Start(
        "[Setup]\nVersion=7\nBellLevel=12x\nColor1=5\nColor2=text\nColor63=4294967297\n"
        "NoFreeLib=2\nTimerRate=1001\nFileCaseMode=257\nUseOverride=1\nXPrinterMargin=none\n"
        "YPrinterMargin=1234567890\n\n\n[Localize]\nLanguage=Deutsch\n\n\n[Deutsch]\n1=Ja\n2=\n3=" +
        text + "\n");
    EXPECT_EQ(gVersion, 7);
    EXPECT_EQ(gBellLevel, 12);
    EXPECT_EQ(GetSysColor(0), 5u);
    EXPECT_EQ(GetSysColor(1), 0u);
    EXPECT_EQ(GetSysColor(2), 0x800000u);
    EXPECT_EQ(GetSysColor(62), 1u);
    EXPECT_EQ(gFileMode, 1);
    EXPECT_EQ(gUseOverride, 1);
    EXPECT_EQ(gPrinterXMargin, 0);
    EXPECT_EQ(gPrinterYMargin, 12345678);
    EXPECT_EQ(Value("Setup", "NoFreeLib"), "0");
    EXPECT_EQ(Value("Setup", "TimerRate"), "50");
    EXPECT_EQ(Value("Setup", "Color3"), "-");
    EXPECT_EQ(Value("Deutsch", "2"), "No");
    EXPECT_EQ(Value("Deutsch", "135"), "Restore defaults");
    EXPECT_EQ(Value("English", "1"), "-");
    EXPECT_STREQ(GetWinString(0), "Ja");
    EXPECT_STREQ(GetWinString(1), "No");
    EXPECT_EQ(GetWinString(2), text.substr(0, 254));
    FreeLib();
}

TEST_F(Preferences, SwitchAndTimerRate)
{
    const struct {
        const char *noFreeBefore, *rateBefore;
        int noFree, rate;
        const char *noFreeAfter, *rateAfter;
    } rows[] = {{"1", "1000", 1, 1000, "1", "1000"},
                {"256", "1", 0, 1, "256", "1"},
                {"3", "4294967297", 0, 1, "0", "1"},
                {"", "0", 0, 1, "", "1"}};
    for (const auto &row : rows) {
        Start(std::string("[Setup]\r\nVersion=4\r\nNoFreeLib=") + row.noFreeBefore +
              "\r\nTimerRate=" + row.rateBefore + "\r\n");
        EXPECT_EQ(gNoFreeLibrary, row.noFree) << row.noFreeBefore;
        EXPECT_EQ(gTimerRate, row.rate) << row.rateBefore;
        EXPECT_EQ(Value("Setup", "NoFreeLib"), row.noFreeAfter);
        EXPECT_EQ(Value("Setup", "TimerRate"), row.rateAfter);
        FreeLib();
    }
}

TEST_F(Preferences, FolderThatIsMissingLeavesTheBuiltInValues)
{
    setenv("WEXELXIDIR", folder.file("none").c_str(), 1);
    ASSERT_EQ(InitLib("/opt/host/bin/host", nullptr, 0), 0);
    EXPECT_STREQ(GetWinString(134), "Restore defaults");
    FreeLib();
    EXPECT_FALSE(FileExists(folder.file("none")));
}

TEST_F(Preferences, TextSetEarlyWins)
{
    SetWinString(4, "Halt");
    SetWinString(-1, "x");
    SetWinString(135, "x");
    SetWinString(5, nullptr);
    ASSERT_EQ(InitLib("/opt/host/bin/host", nullptr, 0), 0);
    EXPECT_STREQ(GetWinString(4), "Halt");
    EXPECT_STREQ(GetWinString(5), "Retry");
    SetWinString(5, GetWinString(5));
    EXPECT_STREQ(GetWinString(5), "Retry");
    EXPECT_EQ(Value("English", "5"), "Abort");
    FreeLib();
}

TEST(Colours, WidenTheGap)
{
    const struct {
        COLORREF color, other, result;
    } rows[] = {
        {0x101010, 0x000000, 0xC0C0C0},   {0x808080, 0x808080, 0x4E4E4E},
        {0xF0F0F0, 0xE0E0E0, 0xCECECE},   {0x808080, 0x80804E, 0x808080},
        {0x808080, 0x80804F, 0x4E4E81},   {0x101010, 0x111111, 0x414141},
        {0x4F4F50, 0x4F4F50, 0x1D1D1E},   {0xFF101010, 0, 0xC0C0C0},
        {0xFF808080, 0x808080, 0x4E4E4E},
    };
    for (const auto &row : rows) {
        COLORREF color = row.color;
        gWidenColorGap(&color, row.other);
        EXPECT_EQ(color, row.result) << std::hex << row.color << " " << row.other;
    }
}

} // namespace
