#include <algorithm>
#include <fnmatch.h>
#include <string>

#include "tools/trace/settings.h"

namespace trace {

std::string_view Select(std::string_view list, bool (&chosen)[kCallCount])
{
    std::fill(std::begin(chosen), std::end(chosen), list.starts_with('!'));
    while (!list.empty()) {
        const size_t comma = std::min(list.find(','), list.size());
        const std::string_view word = list.substr(0, comma);
        const bool wanted = !word.starts_with('!');
        const std::string pattern(word.substr(wanted ? 0 : 1));
        bool found = pattern == "all" || pattern == "none";
        for (int i = 0; i < kCallCount; i++) {
            const std::string family(kSignatures[i].family);
            const std::string name(kSignatures[i].name);
            if (pattern != "all" && fnmatch(pattern.c_str(), name.c_str(), 0) != 0 &&
                fnmatch(pattern.c_str(), family.c_str(), 0) != 0)
                continue;
            chosen[i] = wanted;
            found = true;
        }
        if (!found)
            return word;
        list.remove_prefix(std::min(comma + 1, list.size()));
    }
    return {};
}

} // namespace trace
