// A pattern list and a name, a line each: a list matches if one of its pieces does, and folding
// case loses no match.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "files/wildcard.h"

using namespace wexelxi;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    const size_t line = text.find('\n');
    const std::string_view list = text.substr(0, line);
    const std::string terminated(line == text.npos ? "" : text.substr(line + 1));
    const char *name = terminated.c_str();
    bool any = false;
    for (size_t at = 0; at < list.size();) {
        const std::string_view piece = list.substr(at, list.find(';', at) - at);
        const bool matches = !piece.empty() && MatchesWildcard(piece, name, true);
        if (matches && IsPlainName(piece) && piece != name)
            abort();
        any = any || matches;
        at += piece.size() + 1;
    }
    if (MatchesAnyWildcard(list, name, ';', true) != any)
        abort();
    MatchesAnyWildcard(list, name, ';', false);
    if (*name && !MatchesWildcard("*", name, true))
        abort();
    return 0;
}
