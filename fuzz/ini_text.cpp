// Any bytes as a profile file: searches and lists stay inside it, and a write keeps every byte but
// the line that it replaces, and is found again.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "profile/ini_index.h"
#include "profile/ini_text.h"

using namespace wexelxi;

static void Check(bool holds)
{
    if (!holds)
        abort();
}

static void CheckList(std::string_view text, std::string_view section, uint32_t size)
{
    std::vector<char> list(size, '*');
    const uint32_t used = CopyIniSection(text, section, list.data(), size);
    Check(used == 0 || used < size);
    Check(used == 0 || size < 2 || used == size - 2 || list[used] == '\0');
}

static void CheckWrite(std::string_view file, std::string_view section, std::string_view key)
{
    const IniRewrite plan = PlanIniRewrite(file, section, key, "value");
    Check(plan.keep <= plan.resume && plan.resume <= file.size());
    Check(file.substr(plan.keep, plan.resume - plan.keep).find('\0') == std::string_view::npos);
    std::string changed(plan.SizeOf(file), '*');
    plan.Write(file, changed.data());
    // A key that lies in the text before and behind the write is found with the new value. Behind
    // a line with no '=', or in a section whose header was cut off, it stays hidden.
    const std::string_view text = ParsedPart(changed);
    const IniKeySearch found = SearchIniKey(text, section, key);
    if (SearchIniKey(ParsedPart(file), section, key).value != kNoPlace)
        Check(found.value != kNoPlace && IniValueAt(text, found.value) == "value");
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string_view file(reinterpret_cast<const char *>(data), size);
    const std::string_view text = ParsedPart(file);
    IniIndex index;
    for (std::string_view section : {"a", "", "b\nb"}) {
        for (std::string_view key : {"k", "", "k\r\nl"}) {
            const IniKeySearch found = SearchIniKey(text, section, key);
            size_t value = 0;
            Check(!index.Find(text, section, key, value) || value == found.value);
            Check(found.value == kNoPlace || found.value <= text.size());
            Check(found.position == kNoPlace || found.position <= text.size());
            CheckWrite(file, section, key);
        }
        for (uint32_t listSize : {0u, 1u, 2u, 5u, 4000u})
            CheckList(text, section, listSize);
    }
    size_t line = 0;
    while (line < text.size()) {
        const size_t next = LineEnds(text).NextLine(line);
        Check(next > line);
        line = next;
    }
    return 0;
}
