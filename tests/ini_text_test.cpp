// The grammar of profile texts, the index beside them, and runs of writes whose file changes
// meanwhile.
#include <ctime>
#include <gtest/gtest.h>
#include <random>

#include "profile/ini_cache.h"
#include "profile/ini_text.h"
#include "support/digest.h"
#include "support/library.h"
#include "wexelxi/profile.h"

using namespace std::string_literals;
using namespace wexelxi;

namespace {

std::string Rewritten(const std::string &file, const std::string &section, const std::string &key)
{
    const IniRewrite plan = PlanIniRewrite(file, section, key, "v");
    std::string changed(plan.SizeOf(file), '*');
    plan.Write(file, changed.data());
    return changed;
}

struct TextRow {
    std::string file, section, key, rewritten;
    int32_t value;
};

// What a newcomer to the format would not expect; the sweep below has the rest.
const TextRow kTexts[] = {
    {"", "s", "k", "[s]\r\nk=v\r\n", -1},
    {"[s]\nk=1\n\nl=2", "s", "l", "[s]\nk=1\n\nl=v\r\n", 11}, // LF LF is one line end
    {"[s]\r\nk=1\r\n\r\nl=2", "s", "l", "[s]\r\nk=1\r\nl=v\r\n\r\nl=2", -1},
    {"[s]\nk=1\n[t]\nl=2\n", "s", "l", "[s]\nk=1\n[t]\nl=2\nl=v\r\n", -1}, // "[t]\nl"
    {"[s]\nno key\nk=1", "s", "k", "[s]\nno key\nk=1\r\nk=v\r\n", -1},
    {"[s]\nk=1\n\n\n[s]\n \n", "s", "m", "[s]\nk=1\n\n\n[s]\nm=v\r\n \n", -1},
    {"[s]\nk=1\0[t]"s, "t", "k", "[s]\nk=1\r\n[t]\r\nk=v\r\n\0[t]"s, -1},
};

TEST(IniText, HasItsOwnNotionOfLinesAndSections)
{
    for (const TextRow &row : kTexts) {
        EXPECT_EQ(findIniKey(row.file.c_str(), row.section.c_str(), row.key.c_str(), nullptr),
                  row.value)
            << row.file;
        EXPECT_EQ(Rewritten(row.file, row.section, row.key), row.rewritten);
    }
}

TEST(IniText, AnswersAsItWasJudgedTo)
{
    const std::string pieces[] = {
        "[A]", "[B]", "[", "]", "=",    "A",  "k=",       "k=v",   "kk=",      "\r\n",  "\n", "\r",
        " ",   "!",   ";", "x", "\x80", "\t", "[A]\r\nk", "[A\n]", "\r\n\r\n", "[A]B]", "\0"s};
    const std::string sections[] = {"A", "B", "", "A\n", "[A", "A]B"};
    const std::string keys[] = {"k", "kk", "A", "", "k\n", "[A]\r\nk"};
    std::mt19937 random(21);
    Digest searches, lists, rewrites;
    for (int i = 0; i < 30000; i++) {
        std::string file;
        for (size_t count = random() % 25; count > 0; count--)
            file += pieces[random() % std::size(pieces)];
        const std::string &section = sections[random() % std::size(sections)];
        const std::string &key = keys[random() % std::size(keys)];
        const std::string text(ParsedPart(file));
        const char *position = text.c_str();
        const int32_t value = findIniKey(text.c_str(), section.c_str(), key.c_str(), &position);
        searches.Add(value, position - text.c_str());
        const size_t anywhere = random() % (text.size() + 1);
        searches.Add(nextLine(text.c_str() + anywhere) - text.c_str());

        std::string list(128, '*');
        const auto size = static_cast<uint32_t>(random() % 40);
        lists.Add(CopyIniSection(text, section, list.data(), size), list);
        rewrites.Add(Rewritten(file, section, key));

        // Many questions to one index, of which none may spoil another's answer.
        IniIndex index;
        for (const std::string &asked : sections) {
            for (const std::string &name : keys) {
                size_t place = 7;
                if (index.Find(text, asked, name, place)) {
                    ASSERT_EQ(place, SearchIniKey(text, asked, name).value)
                        << text << asked << name;
                }
            }
        }
    }
    EXPECT_EQ(searches.hex(), "85d57e3d03c04303");
    EXPECT_EQ(lists.hex(), "3ee7e56d0190790a");
    EXPECT_EQ(rewrites.hex(), "9f6f5468734f7993");
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
    for (int i = 1; i <= 64; i++)
        EXPECT_EQ(index.Find(text, std::to_string(i), "k", value), i < 64) << i;
    FileText file = FileText::OfSize(text.size());
    text.copy(file.bytes.get(), text.size());
    IniText asked(std::move(file));
    const clock_t start = clock();
    for (int i = 0; i < 10000; i++)
        EXPECT_EQ(asked.ValueOf("s", "key19999"), "");
    EXPECT_LT(clock() - start, CLOCKS_PER_SEC) << "10,000 walks";
    // 84 bytes, so 42 keys; the sections hold 12, 11, 10, 9 and so on.
    IniIndex small;
    std::string shared;
    for (char name = 'a'; name <= 'l'; name++)
        shared += "["s + name + "]\n1=\n";
    for (char name = 'a'; name <= 'l'; name++)
        EXPECT_EQ(small.Find(shared, {&name, 1}, "1", value), name <= 'd') << name;
}

// The time that a text made of a pattern takes; one that is walked again and again takes 16 times
// as much for 4 times its length.
clock_t TimeOf(const std::string &pattern, size_t size)
{
    const clock_t start = clock();
    std::string text = "[a]\r";
    while (text.size() < size)
        text += pattern;
    EXPECT_EQ(SearchIniKey(text, "a", "none").value, kNoPlace);
    std::string list(text.size() * 2, '*');
    CopyIniSection(text, "a", list.data(), static_cast<uint32_t>(list.size()));
    return clock() - start;
}

TEST(IniText, HostileTextsTakeOneWalk)
{
    for (const char *pattern : {"[", "\r", "x=\r", "[a]\r", "[a", "[a]\nk\n", "k\r\n", "a=\n"})
        EXPECT_LT(TimeOf(pattern, 1'200'000), 8 * TimeOf(pattern, 300'000) + CLOCKS_PER_SEC / 10)
            << pattern;
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
    EXPECT_TRUE(draft.Save());
    EXPECT_EQ(ReadWholeFile(file), "[s]\r\nk=3\r\nl=4\r\n");
    EXPECT_EQ(ReadIniKey(file.c_str(), "s", "l"), "4");
    IniDraft undisturbed(file.c_str());
    undisturbed.Set("s", "l", "5");
    EXPECT_TRUE(undisturbed.Save()) << "at once";
    DropIniCache();
}

} // namespace
