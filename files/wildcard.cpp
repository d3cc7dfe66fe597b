// The walk of pattern and name by two cursors. A star takes the first place that serves it, for
// good: *.txt does not match a.b.txt.
#include "files/wildcard.h"

#include <cctype>
#include <cstring>

namespace wexelxi {
namespace {

struct Exactly {
    static bool AreSame(char a, char b) { return a == b; }
    static const char *Find(const char *text, char wanted) { return strchrnul(text, wanted); }
};

// Characters count as signed, as the platform's table has them.
struct Folded {
    static bool AreSame(char a, char b)
    {
        return a == b ||
               toupper(static_cast<signed char>(a)) == toupper(static_cast<signed char>(b));
    }
    static const char *Find(const char *text, char wanted)
    {
        while (*text && !AreSame(*text, wanted))
            text++;
        return text;
    }
};

template <typename Compare>
bool Walk(std::string_view pattern, const char *n)
{
    const char *p = pattern.data();
    const char *const end = p + pattern.size();
    for (; *n; n++, p++) {
        if (p == end)
            return false;
        if (*p == '*') {
            while (p < end && *p == '*')
                p++;
            if (p == end)
                return true;
            // What follows a star is taken literally, a '?' too.
            n = Compare::Find(n, *p);
            if (!*n)
                return false;
        } else if (*p != '?' && !Compare::AreSame(*p, *n)) {
            return false;
        }
    }
    return p == end;
}

} // namespace

bool MatchesWildcard(std::string_view pattern, const char *name, bool caseSensitive)
{
    if (pattern == "*.*")
        return true;
    return caseSensitive ? Walk<Exactly>(pattern, name) : Walk<Folded>(pattern, name);
}

bool MatchesAnyWildcard(std::string_view list, const char *name, char separator, bool caseSensitive)
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
