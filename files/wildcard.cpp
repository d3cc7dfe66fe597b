// The walk of pattern and name by two cursors. A star takes the first place that serves it, for
// good: *.txt does not match a.b.txt.
#include "files/wildcard.h"

#include <cctype>
#include <functional>

namespace wexelxi {
namespace {

// Characters count as signed, as the platform's table has them.
bool AreSameFolded(char a, char b)
{
    return a == b || toupper(static_cast<signed char>(a)) == toupper(static_cast<signed char>(b));
}

template <typename Same>
bool Walk(std::string_view pattern, std::string_view name, Same same)
{
    const char *p = pattern.data(), *patternEnd = p + pattern.size();
    const char *n = name.data(), *nameEnd = n + name.size();
    for (; n < nameEnd; n++, p++) {
        if (p == patternEnd)
            return false;
        if (*p == '*') {
            while (p < patternEnd && *p == '*')
                p++;
            if (p == patternEnd)
                return true;
            // What follows a star is taken literally, a '?' too.
            while (n < nameEnd && !same(*p, *n))
                n++;
            if (n == nameEnd)
                return false;
        } else if (*p != '?' && !same(*p, *n)) {
            return false;
        }
    }
    return p == patternEnd;
}

} // namespace

bool MatchesWildcard(std::string_view pattern, std::string_view name, bool caseSensitive)
{
    if (pattern == "*.*")
        return true;
    return caseSensitive ? Walk(pattern, name, std::equal_to<char>())
                         : Walk(pattern, name, AreSameFolded);
}

bool MatchesAnyWildcard(std::string_view list, std::string_view name, char separator,
                        bool caseSensitive)
{
    while (!list.empty()) {
        const std::string_view piece = list.substr(0, list.find(separator));
        if (!piece.empty() && MatchesWildcard(piece, name, caseSensitive))
            return true;
        list.remove_prefix(piece.size() < list.size() ? piece.size() + 1 : piece.size());
    }
    return false;
}

} // namespace wexelxi
