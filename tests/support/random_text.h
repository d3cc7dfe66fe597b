// Texts for sweeps: pieces of a kind, put together at random.
#pragma once

#include <random>
#include <sstream>
#include <string>
#include <vector>

// At most so many of the pieces, between which a '|' stands.
inline std::string RandomText(std::mt19937 &random, const char *pieces, size_t most)
{
    std::vector<std::string> all;
    std::istringstream list(pieces);
    for (std::string piece; std::getline(list, piece, '|');)
        all.push_back(piece);
    std::string text;
    for (size_t count = random() % (most + 1); count > 0; count--)
        text += all[random() % all.size()];
    return text;
}
