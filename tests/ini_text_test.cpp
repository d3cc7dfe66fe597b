// The grammar of profile texts against a slow twin, and what the twin cannot tell.
#include <chrono>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "profile/ini_text.h"
#include "wexelxi/profile.h"

using namespace std::string_literals;
using namespace wexelxi;

namespace {

// The twin: one byte and one rule at a time, on terminated texts.
const char *SlowNextLine(const char *at)
{
    while (*at && *at != '\r' && *at != '\n')
        at++;
    if (*at)
        at += at[1] == '\n' ? 2 : 1;
    return at;
}

// Calls line(start) for each line of the sections of that name, until it gives no place to go on
// from; a line that ends a section is given too.
template <typename Line>
void SlowWalk(const char *at, const std::string &section, Line line)
{
    while (*at) {
        const char *end = at;
        while (*end && *end != ']')
            end++;
        if (*at != '[' || std::string(at + 1, end) != section) {
            at = SlowNextLine(at);
            continue;
        }
        at = SlowNextLine(end);
        for (const char *next; (next = line(at)) != at; at = next) {
            if (!next)
                return;
        }
        at = SlowNextLine(at);
    }
}

IniKeySearch SlowSearch(const char *text, const char *section, const std::string &key)
{
    IniKeySearch found;
    SlowWalk(text, section, [&](const char *line) {
        found.position = static_cast<size_t>(line - text);
        if (static_cast<signed char>(*line) < 33)
            return line;
        const char *end = line;
        while (*end && *end != '=')
            end++;
        if (*end != '=' || std::string(line, end) != key)
            return SlowNextLine(end);
        found.value = static_cast<size_t>(end + 1 - text);
        return static_cast<const char *>(nullptr);
    });
    return found;
}

uint32_t SlowList(const char *text, const char *section, std::string &list, uint32_t size)
{
    uint32_t used = 0;
    bool fits = true;
    SlowWalk(text, section, [&](const char *line) {
        if (static_cast<signed char>(*line) < 33 || *line == '[')
            return line;
        const auto length = static_cast<uint32_t>(strcspn(line, "\r\n"));
        fits = used + length + 2 <= size;
        if (!fits)
            return static_cast<const char *>(nullptr);
        list.replace(used, length + 2, std::string(line, length) + "\0\0"s);
        used += length + 1;
        return SlowNextLine(line);
    });
    return fits ? used : size < 2 ? 0 : size - 2;
}

std::string SlowRewrite(const std::string &old, const char *section, const char *key)
{
    const char *text = old.c_str();
    const IniKeySearch found = SlowSearch(text, section, key);
    const std::string line = key + "=v\r\n"s;
    if (found.position == kNoPlace)
        return old + (old.empty() ? "" : "\r\n") + "[" + section + "]\r\n" + line;
    const char *place = text + found.position;
    const bool isOpen = !*place && place[-1] != '\r' && place[-1] != '\n';
    return std::string(text, place) + (isOpen && found.value == kNoPlace ? "\r\n" : "") + line +
           (found.value == kNoPlace ? place : SlowNextLine(place));
}

std::string Apply(const std::string &file, const IniRewrite &plan)
{
    std::string changed(plan.SizeOf(file), '*');
    plan.Write(file, changed.data());
    return changed;
}

TEST(IniText, AgreesWithItsTwin)
{
    const char *const pieces[] = {
        "[A]", "[B]", "[", "]", "=", "A",    "k=",       "k=v",   "kk=", "\r\n",    "\n",
        "\r",  " ",   "!", ";", "x", "\x80", "[A]\r\nk", "[A\n]", "\t",  "\r\n\r\n"};
    const char *const sections[] = {"A", "B", "", "A\n", "[A"};
    const char *const keys[] = {"k", "kk", "A", "", "k\n", "[A]\r\nk"};
    std::mt19937 random(21);
    for (int i = 0; i < 100000; i++) {
        std::string text;
        for (size_t count = random() % 25; count > 0; count--)
            text += pieces[random() % std::size(pieces)];
        SCOPED_TRACE(testing::PrintToString(text));
        const char *const section = sections[random() % std::size(sections)];
        const char *const key = keys[random() % std::size(keys)];
        const IniKeySearch slow = SlowSearch(text.c_str(), section, key);
        const char *position = nullptr;
        ASSERT_EQ(findIniKey(text.c_str(), section, key, &position), static_cast<int>(slow.value));
        ASSERT_EQ(position, slow.position == kNoPlace ? nullptr : text.c_str() + slow.position);
        const char *const anywhere = text.c_str() + random() % (text.size() + 1);
        ASSERT_EQ(nextLine(anywhere), SlowNextLine(anywhere));

        const auto size = static_cast<uint32_t>(random() % 40);
        std::string list(128, '*'), slowList = list;
        ASSERT_EQ(CopyIniSection(text, section, list.data(), size),
                  SlowList(text.c_str(), section, slowList, size));
        ASSERT_EQ(list, slowList);
        ASSERT_EQ(Apply(text, PlanIniRewrite(text, section, key, "v")),
                  SlowRewrite(text, section, key));
    }
}

TEST(IniText, NamesOfAnyLengthAndBytesBehindTheText)
{
    const std::string name(5000, 'n');
    EXPECT_EQ(SearchIniKey("[" + name + "]\n" + name + "=1", name, name).value, 10004u);
    EXPECT_EQ(findIniKey(nullptr, "s", "a", nullptr), -1);
    const std::pair<std::string, std::string> rows[] = {
        {"[a]\nk=1\n\0[a]\nk=2"s, "[a]\nk=v\r\n\0[a]\nk=2"s},
        {"[a]\nx=1\0rest"s, "[a]\nx=1\r\nk=v\r\n\0rest"s},
        {"[b]\n\0rest"s, "[b]\n\r\n[a]\r\nk=v\r\n\0rest"s}};
    for (const auto &[file, changed] : rows)
        EXPECT_EQ(Apply(file, PlanIniRewrite(file, "a", "k", "v")), changed);
}

// Texts made to be passed again and again; a walk that is not linear takes minutes.
TEST(IniText, HostileTextsTakeOneWalk)
{
    const auto start = std::chrono::steady_clock::now();
    for (const std::string pattern :
         {"[", "\r", "x=\r", "[a]\r", "[a", "[a]\nk\n", "k\r\n", "a=\n"}) {
        std::string text = "[a]\r";
        while (text.size() < 1'000'000)
            text += pattern;
        EXPECT_EQ(SearchIniKey(text, "a", "none").value, kNoPlace);
        std::string list(text.size() * 2, '*');
        CopyIniSection(text, "a", list.data(), static_cast<uint32_t>(list.size()));
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

} // namespace
