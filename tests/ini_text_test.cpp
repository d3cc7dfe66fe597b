// The grammar of profile texts, directly.
#include <chrono>
#include <gtest/gtest.h>
#include <string>

#include "profile/ini_text.h"

using namespace std::string_literals;
using namespace wexelxi;

namespace {

std::string ValueOf(std::string_view text, std::string_view section, std::string_view key)
{
    const IniKeySearch found = SearchIniKey(text, section, key);
    return found.value == kNoPlace ? "-" : std::string(IniValueAt(text, found.value));
}

TEST(IniText, SeesWhatItShouldAndNothingElse)
{
    const struct {
        const char *text, *section, *key, *value; // "-": not found
    } rows[] = {
        {"", "a", "k", "-"},
        {"[a]\r\nk=  v  \r\n", "a", "k", "  v  "},
        {"[a]\nk=\n", "a", "k", ""},
        {"[a]\nk=v=w", "a", "k", "v=w"},
        {"[A]\nk=1\n", "a", "k", "-"},
        {"[a]\nK=1\n", "a", "k", "-"},
        {"[ab]\nk=1\n", "a", "k", "-"},
        {" [a]\nk=1\n", "a", "k", "-"},
        {"[a]\nk =1\n", "a", "k", "-"},
        {"k=0\n[a] x [b]\nk=1\n", "b", "k", "-"},
        // Line ends: CR LF and LF LF are one each.
        {"[a]\r\nx=1\r\n\r\nk=2\r\n", "a", "k", "-"},
        {"[a]\nx=1\n\nk=2\n", "a", "k", "2"},
        {"[a]\nx=1\n\n\nk=2\n", "a", "k", "-"},
        {"[a]\rx=1\rk=2\r", "a", "k", "2"},
        {"[a]\rx=1\r\rk=2\r", "a", "k", "-"},
        // A first byte below 33, as a signed one, ends the section.
        {"[a]\nx=1\n y=1\nk=2\n", "a", "k", "-"},
        {"[a]\nx=1\n\x80=1\nk=2\n", "a", "k", "-"},
        {"[a]\nx=1\n!=1\nk=2\n", "a", "k", "2"},
        // A line with no '=' hides the next one, and is no key at the end of the text.
        {"[a]\n;comment\nk=1\nl=2\n", "a", "k", "-"},
        {"[a]\n;comment\nk=1\nl=2\n", "a", "l", "2"},
        {"[a]\nk", "a", "k", "-"},
        {"[a]\nk\r\nl=5\n", "a", "k\r\nl", "5"},
        // A header does not end a section, an empty line in front of it does.
        {"[a]\nx=1\n[b]\nk=2\nl=3\n", "a", "k", "-"},
        {"[a]\nx=1\n[b]\nk=2\nl=3\n", "a", "l", "3"},
        {"[a]\nx=1\n[b]\nk=2\nl=3\n", "b", "k", "2"},
        {"[a]\r\nx=1\r\n\r\n[b]\r\nk=2\r\n", "a", "k", "-"},
        {"[a]\r\nx=1\r\n\r\n[a]\r\nk=2\r\n", "a", "k", "2"},
        // A header whose name runs on is left behind at the end of its own line.
        {"[x\n[a]\nk=1\n", "a", "k", "1"},
        {"[x\n[a]\nk=1\n", "x\n[a", "k", "1"},
        {"[a", "a", "k", "-"},
        {"[]]\nk=1\n", "]", "k", "-"},
        {"[]\n=1\n", "", "", "1"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(ValueOf(row.text, row.section, row.key), row.value)
            << testing::PrintToString(row.text) << " " << row.section << " " << row.key;
    const std::string longName(5000, 'n');
    EXPECT_EQ(ValueOf("[" + longName + "]\n" + longName + "=1", longName, longName), "1");
}

TEST(IniText, ListsSections)
{
    const struct {
        const char *text;
        uint32_t size, used;
        std::string list; // with its last NUL
    } rows[] = {
        {"[a]\r\nk=1\r\n;c\r\nl\r\n\r\n[b]\r\nx=1\r\n", 99, 9, "k=1\0;c\0l\0\0"s},
        {"[a]\nk=1\n[a]\nx=1\n\n\n[a]\nl=2", 99, 8, "k=1\0l=2\0\0"s},
        {"[a]\n\x80\n", 99, 0, "*"},
        {"[b]\nk=1\n", 99, 0, "*"},
        {"[a]\nk=1\nl=2\n", 9, 8, "k=1\0l=2\0\0"s},
        {"[a]\nk=1\nl=2\n", 8, 6, "k=1\0\0*"s},
        {"[a]\nk=1\n", 4, 2, "*"},
        {"[a]\nk=1\n", 1, 0, "*"},
        {"[a]\nk=1\n", 0, 0, "*"},
    };
    for (const auto &row : rows) {
        std::string list(100, '*');
        EXPECT_EQ(CopyIniSection(row.text, "a", list.data(), row.size), row.used) << row.text;
        EXPECT_EQ(list.substr(0, row.list.size()), row.list) << row.text << row.size;
        EXPECT_EQ(list.find_first_not_of('*', row.list.size()), std::string::npos) << row.text;
    }
}

TEST(IniText, RewritesKeepEveryOtherByte)
{
    const struct {
        std::string file, changed;
    } rows[] = {
        {"", "[a]\r\nk=v\r\n"},
        {"\n", "\n\r\n[a]\r\nk=v\r\n"},
        {"x", "x\r\n[a]\r\nk=v\r\n"},
        {"[a]\r\nx=1\r\n\r\n[b]\r\n", "[a]\r\nx=1\r\nk=v\r\n\r\n[b]\r\n"},
        {"[a]\r\nx=1\r\n\r\n[a]\r\ny=1", "[a]\r\nx=1\r\n\r\n[a]\r\ny=1\r\nk=v\r\n"},
        {"[a]\nk=old\nx=1\n", "[a]\nk=v\r\nx=1\n"},
        {"[a]\nk=old", "[a]\nk=v\r\n"},
        {"[a]\rk=old\r\rz", "[a]\rk=v\r\n\rz"},
        {"[a]", "[a]\r\nk=v\r\n"},
        {"[a", "[a\r\nk=v\r\n"},
        {"[a]\n;c\n", "[a]\n;c\nk=v\r\n"},
        {"[a]\nk=1\n\0[a]\nk=2"s, "[a]\nk=v\r\n\0[a]\nk=2"s},
        {"[a]\nx=1\0rest"s, "[a]\nx=1\r\nk=v\r\n\0rest"s},
        {"[b]\n\0rest"s, "[b]\n\r\n[a]\r\nk=v\r\n\0rest"s},
    };
    for (const auto &row : rows) {
        const IniRewrite plan = PlanIniRewrite(row.file, "a", "k", "v");
        EXPECT_EQ(row.file.substr(0, plan.keep) + plan.text + row.file.substr(plan.resume),
                  row.changed);
    }
}

// Texts made to be passed again and again; a walk that is not linear takes minutes.
TEST(IniText, HostileTextsTakeOneWalk)
{
    const std::string patterns[] = {"[", "\r", "x=\r", "[a]\r", "[a", "[a]\nk\n", "k\r\n", "a=\n"};
    const auto start = std::chrono::steady_clock::now();
    for (const std::string &pattern : patterns) {
        std::string text = "[a]\r";
        while (text.size() < 1'000'000)
            text += pattern;
        EXPECT_EQ(ValueOf(text, "a", "none"), "-");
        std::string list(text.size() * 2, '*');
        CopyIniSection(text, "a", list.data(), static_cast<uint32_t>(list.size()));
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

} // namespace
