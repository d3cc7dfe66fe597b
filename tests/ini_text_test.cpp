// The grammar of profile texts against a slow twin, the index against the search, and runs of
// writes whose file changes meanwhile.
#include <cstring>
#include <ctime>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "profile/ini_cache.h"
#include "profile/ini_text.h"
#include "support/library.h"
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
    for (int i = 0; i < 60000; i++) {
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

        // Many questions to one index, of which none may spoil another's answer.
        IniIndex index;
        for (const char *asked : sections) {
            for (const char *name : {key, "k", "[A]\r\nk"}) {
                size_t value = 7;
                if (index.Find(text, asked, name, value)) {
                    ASSERT_EQ(value, SearchIniKey(text, asked, name).value) << asked << name;
                }
            }
        }
    }
}

TEST(IniIndex, KnowsLargeSectionsAndNoMoreThanItsBounds)
{
    std::string text = "[s]\nk=first\nk=second\n";
    for (int i = 0; i < 20000; i++)
        text += "key" + std::to_string(i) + "=\n";
    IniIndex index;
    size_t value = 0;
    for (const char *key : {"k", "key0", "key9999", "key19999", "key20000"}) {
        ASSERT_TRUE(index.Find(text, "s", key, value)) << key;
        EXPECT_EQ(value, SearchIniKey(text, "s", key).value) << key;
    }
    // 84 bytes, so 42 keys; the sections hold 12, 11, 10, 9 and so on.
    IniIndex small;
    std::string shared;
    for (char name = 'a'; name <= 'l'; name++)
        shared += std::string("[") + name + "]\n1=\n";
    for (char name = 'a'; name <= 'l'; name++)
        EXPECT_EQ(small.Find(shared, {&name, 1}, "1", value), name <= 'd') << name;
    EXPECT_TRUE(small.Find(shared, "b", "[c]\n1", value));
    EXPECT_EQ(value, 20u);
}

// Texts made to be passed again and again; a walk that is not linear takes much longer.
TEST(IniText, HostileTextsTakeOneWalk)
{
    const clock_t start = clock();
    for (const std::string pattern :
         {"[", "\r", "x=\r", "[a]\r", "[a", "[a]\nk\n", "k\r\n", "a=\n"}) {
        std::string text = "[a]\r";
        while (text.size() < 1'000'000)
            text += pattern;
        EXPECT_EQ(SearchIniKey(text, "a", "none").value, kNoPlace);
        std::string list(text.size() * 2, '*');
        CopyIniSection(text, "a", list.data(), static_cast<uint32_t>(list.size()));
    }
    EXPECT_LT(clock() - start, 8 * CLOCKS_PER_SEC);
}

TEST(IniDraft, IsMadeAgainOnWhatOthersLeft)
{
    ScratchFolder folder;
    const std::string file = folder.file("x.ini");
    WriteWholeFile(file, "[s]\r\nk=1\r\n");
    IniDraft draft(file.c_str());
    EXPECT_EQ(draft.Get("s", "k"), "1");
    draft.Set("s", "l", "2");
    EXPECT_EQ(draft.Get("s", "l"), "2");
    WriteWholeFile(file, "[s]\r\nk=3\r\n");
    EXPECT_FALSE(draft.Save());
    EXPECT_EQ(draft.Get("s", "k"), "3");
    EXPECT_EQ(draft.Get("s", "l"), std::nullopt);
    draft.Set("s", "l", "4");
    EXPECT_EQ(draft.Get("s", "l"), "4");
    EXPECT_TRUE(draft.Save());
    EXPECT_EQ(ReadWholeFile(file), "[s]\r\nk=3\r\nl=4\r\n");
    // The last step was a read, which leaves the text in the cache.
    WriteWholeFile(file, "");
    EXPECT_EQ(ReadIniKey(file.c_str(), "s", "l"), "4");
    DropIniCache();
}

} // namespace
