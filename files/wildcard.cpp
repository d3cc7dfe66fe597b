// The walk of pattern and name by two cursors. A star takes the first place that serves it, for
// good: *.txt does not match a.b.txt.
#include "files/wildcard.h"

#include <cctype>

namespace wexelxi {
namespace {

// Characters count as signed, as the platform's table has them.
bool SameCharacter(char a, char b, bool caseSensitive)
{
    if (a == b || caseSensitive)
        return a == b;
    return toupper(static_cast<signed char>(a)) == toupper(static_cast<signed char>(b));
}

size_t FindCharacter(std::string_view name, size_t from, char wanted, bool caseSensitive)
{
    while (from < name.size() && !SameCharacter(name[from], wanted, caseSensitive))
        from++;
    return from;
}

} // namespace

bool MatchesWildcard(std::string_view pattern, std::string_view name, bool caseSensitive)
{
    if (pattern == "*.*")
        return true;
    size_t p = 0;
    for (size_t n = 0; n < name.size(); n++, p++) {
        if (p == pattern.size())
            return false;
        if (pattern[p] == '*') {
            p = pattern.find_first_not_of('*', p);
            if (p == std::string_view::npos)
                return true;
            // What follows a star is taken literally, a '?' too.
            n = FindCharacter(name, n, pattern[p], caseSensitive);
            if (n == name.size())
                return false;
        } else if (pattern[p] != '?' && !SameCharacter(pattern[p], name[n], caseSensitive)) {
            return false;
        }
    }
    return p == pattern.size();
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
