// The wildcard matcher of searches, as pure functions.
#pragma once

#include <string_view>

namespace wexelxi {

// '*' stands for any run up to the first character that equals the one behind the star, and for the
// whole rest where none is behind it; '?' for any one character. There is no backtracking, and a
// star at the end of the name matches nothing. "*.*" matches every name.
bool MatchesWildcard(std::string_view pattern, const char *name, bool caseSensitive);

// Whether one of the patterns of a list matches; an empty piece of the list matches nothing.
bool MatchesAnyWildcard(std::string_view list, const char *name, char separator,
                        bool caseSensitive);

// Whether a pattern is a plain name, which can match nothing but itself.
inline bool IsPlainName(std::string_view pattern)
{
    return pattern.find_first_of("*?") == std::string_view::npos;
}

} // namespace wexelxi
