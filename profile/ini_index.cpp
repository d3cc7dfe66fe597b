// Tables of open slots, made by a walk over the text for each section. Everything is bounded: the
// sections, the keys of all of them, and the steps to a key's slot; what passes a bound, or has no
// memory, is searched for in the text.
#include "profile/ini_index.h"

#include <functional>
#include <new>

#include "profile/ini_text.h"

namespace wexelxi {
namespace {

constexpr size_t kMaxSections = 64;
constexpr size_t kFirstSlots = 512;
constexpr uint32_t kMaxSteps = 128;

uint32_t HashOf(std::string_view key)
{
    return static_cast<uint32_t>(std::hash<std::string_view>()(key));
}

// The slot of a key, or the empty one where it would stand; null at the end of the way.
IniIndex::Key *SlotOf(std::vector<IniIndex::Key> &slots, std::string_view text,
                      std::string_view key, uint32_t hash)
{
    for (uint32_t step = 0; step < kMaxSteps; step++) {
        IniIndex::Key &slot = slots[(hash + step) & (slots.size() - 1)];
        if (slot.value == 0 ||
            (slot.hash == hash && text.substr(slot.value - 1 - slot.length, slot.length) == key))
            return &slot;
    }
    return nullptr;
}

} // namespace

// All keys, of one name the first; starts over with more slots when half are taken.
std::vector<IniIndex::Key> IniIndex::TakeIn(std::string_view text, std::string_view section)
{
    std::vector<Key> slots(kFirstSlots);
    size_t count = 0;
    for (IniKeyWalk walk(text, section); walk.Next();) {
        const std::string_view key = walk.Key();
        const uint32_t hash = HashOf(key);
        Key *slot = SlotOf(slots, text, key, hash);
        if (!slot || keyCount_ + count == text.size() / 2)
            return {};
        if (slot->value != 0)
            continue;
        *slot = {hash, static_cast<uint32_t>(key.size()), static_cast<uint32_t>(walk.Value())};
        if (++count * 2 > slots.size()) {
            slots.assign(slots.size() * 4, {});
            count = 0;
            walk = IniKeyWalk(text, section);
        }
    }
    keyCount_ += count;
    return slots;
}

IniIndex::Section *IniIndex::SectionOf(std::string_view text, std::string_view name)
{
    for (Section &section : sections_) {
        if (section.name == name)
            return &section;
    }
    if (sections_.size() == kMaxSections)
        return nullptr;
    return &sections_.emplace_back(Section{std::string(name), TakeIn(text, name)});
}

bool IniIndex::Find(std::string_view text, std::string_view section, std::string_view key,
                    size_t &value)
{
    try {
        Section *known = SectionOf(text, section);
        if (!known || known->slots.empty())
            return false;
        const Key *slot = SlotOf(known->slots, text, key, HashOf(key));
        value = slot && slot->value ? slot->value : kNoPlace;
        return true;
    } catch (const std::bad_alloc &) {
        return false;
    }
}

} // namespace wexelxi
