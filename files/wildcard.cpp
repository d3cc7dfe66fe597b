// The walk of pattern and name by two cursors. A star takes the first place that serves it, for
// good: *.txt does not match a.b.txt.
#include "files/wildcard.h"

#include <cctype>
#include <cstring>

namespace wexelxi {
namespace {

// Characters count as signed, as the platform's table has them.
bool AreSame(char a, char b, bool caseSensitive)
{
    return a == b || (!caseSensitive &&
                      toupper(static_cast<signed char>(a)) == toupper(static_cast<signed char>(b)));
}

} // namespace

bool MatchesWildcard(std::string_view pattern, const char *name, bool caseSensitive)
{
    if (pattern == "*.*")
        return true;
    size_t at = 0;
    for (; *name; name++, at++) {
        if (at == pattern.size())
            return false;
        if (pattern[at] == '*') {
            at = pattern.find_first_not_of('*', at);
            if (at == pattern.npos)
                return true;
            // What follows a star is taken literally, a '?' too.
            if (caseSensitive)
                name = strchrnul(name, pattern[at]);
            while (*name && !AreSame(*name, pattern[at], caseSensitive))
                name++;
            if (!*name)
                return false;
        } else if (pattern[at] != '?' && !AreSame(*name, pattern[at], caseSensitive)) {
            return false;
        }
    }
    return at == pattern.size();
}

bool MatchesAnyWildcard(std::string_view list, const char *name, char separator, bool caseSensitive)
{
    for (size_t at = 0; at < list.size();) {
        const std::string_view piece = list.substr(at, list.find(separator, at) - at);
        if (!piece.empty() && MatchesWildcard(piece, name, caseSensitive))
            return true;
        at += piece.size() + 1;
    }
    return false;
}

} // namespace wexelxi
