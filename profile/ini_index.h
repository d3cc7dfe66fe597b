// An index beside a profile text: where the values of the keys stand, for the sections that were
// asked for. It answers as the search through the text does, or leaves the question to that.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "core/owners.h"

namespace wexelxi {

class IniIndex {
public:
    // Whether the index knows the section of the text, which it takes in at the first question if
    // there is room. `value` then is the place behind the key's '=', or kNoPlace. The text is the
    // same one in every call.
    bool Find(std::string_view text, std::string_view section, std::string_view key, size_t &value);

private:
    struct Key {
        uint32_t hash;
        uint32_t length;
        uint32_t value; // 0: an empty slot
    };

    // The keys of a section in a table of open slots, 2^n of them; without slots the section is one
    // that the index leaves alone.
    struct Section {
        std::unique_ptr<Section> next;
        MallocBlock<char> name;
        size_t nameLength = 0;
        MallocBlock<Key> slots;
        size_t slotCount = 0;
        size_t keyCount = 0;

        Key *SlotOf(std::string_view text, std::string_view key, uint32_t hash) const;
        bool AddAll(std::string_view text, std::string_view section, size_t mostKeys);
    };

    Section *SectionOf(std::string_view text, std::string_view name);
    bool Enter(std::string_view text, std::string_view name);

    std::unique_ptr<Section> sections_; // the one that was asked for last comes first
    size_t sectionCount_ = 0;
    size_t keyCount_ = 0;
};

} // namespace wexelxi
