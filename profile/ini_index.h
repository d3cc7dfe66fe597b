// An index beside a profile text: where the values of the keys stand, for the sections that were
// asked for. It answers as the search through the text does, or leaves the question to that.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace wexelxi {

class IniIndex {
public:
    // Whether the index knows the section of the text, which it takes in at the first question if
    // there is room. `value` then is the place behind the key's '=', or kNoPlace. The text is the
    // same one in every call.
    bool Find(std::string_view text, std::string_view section, std::string_view key, size_t &value);

    struct Key {
        uint32_t hash;
        uint32_t length;
        uint32_t value; // 0: an empty slot
    };

private:
    // The keys of a section in a table of open slots, 2^n of them; without slots the section is one
    // that the index leaves alone.
    struct Section {
        std::string name;
        std::vector<Key> slots;
    };

    Section *SectionOf(std::string_view text, std::string_view name);
    std::vector<Key> TakeIn(std::string_view text, std::string_view section);

    std::vector<Section> sections_;
    size_t keyCount_ = 0;
};

} // namespace wexelxi
