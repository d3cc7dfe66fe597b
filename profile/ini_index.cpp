// Tables of open slots, made by a walk over the text for each section. Everything is bounded: the
// sections, the keys of all of them, and the steps to a key's slot; what passes a bound, or has no
// memory, is searched for in the text.
#include "profile/ini_index.h"

#include <cstring>
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

} // namespace

// The slot of a key, or the empty one where it would stand; null at the end of the way.
IniIndex::Key *IniIndex::Section::SlotOf(std::string_view text, std::string_view key,
                                         uint32_t hash) const
{
    for (uint32_t step = 0; step < kMaxSteps; step++) {
        Key &slot = slots.get()[(hash + step) & (slotCount - 1)];
        if (slot.value == 0 ||
            (slot.hash == hash && text.substr(slot.value - 1 - slot.length, slot.length) == key))
            return &slot;
    }
    return nullptr;
}

// Enters all keys, of one name the first; starts over with more slots when half are taken.
bool IniIndex::Section::AddAll(std::string_view text, std::string_view section, size_t mostKeys)
{
    slotCount = slotCount ? slotCount * 4 : kFirstSlots;
    slots.reset(static_cast<Key *>(calloc(slotCount, sizeof(Key))));
    keyCount = 0;
    for (IniKeyWalk walk(text, section); slots && walk.Next();) {
        const std::string_view key = walk.Key();
        const uint32_t hash = HashOf(key);
        Key *slot = SlotOf(text, key, hash);
        if (!slot || keyCount == mostKeys)
            return false;
        if (slot->value != 0)
            continue;
        *slot = {hash, static_cast<uint32_t>(key.size()), static_cast<uint32_t>(walk.Value())};
        if (++keyCount * 2 > slotCount)
            return AddAll(text, section, mostKeys);
    }
    return slots != nullptr;
}

// A new entry in front of the others, if there is memory for it.
bool IniIndex::Enter(std::string_view text, std::string_view name)
{
    std::unique_ptr<Section> section(new (std::nothrow) Section);
    if (!section)
        return false;
    section->name.reset(static_cast<char *>(malloc(name.size() + 1)));
    if (!section->name)
        return false;
    section->nameLength = name.copy(section->name.get(), name.size());
    if (!section->AddAll(text, name, text.size() / 2 - keyCount_))
        section->slots.reset();
    else
        keyCount_ += section->keyCount;
    section->next = std::move(sections_);
    sections_ = std::move(section);
    sectionCount_++;
    return true;
}

IniIndex::Section *IniIndex::SectionOf(std::string_view text, std::string_view name)
{
    for (std::unique_ptr<Section> *link = &sections_; *link; link = &(*link)->next) {
        if (std::string_view((*link)->name.get(), (*link)->nameLength) != name)
            continue;
        std::unique_ptr<Section> found = std::move(*link);
        *link = std::move(found->next);
        found->next = std::move(sections_);
        sections_ = std::move(found);
        return sections_.get();
    }
    if (sectionCount_ == kMaxSections || !Enter(text, name))
        return nullptr;
    return sections_.get();
}

bool IniIndex::Find(std::string_view text, std::string_view section, std::string_view key,
                    size_t &value)
{
    const Section *known = SectionOf(text, section);
    if (!known || !known->slots)
        return false;
    const Key *slot = known->SlotOf(text, key, HashOf(key));
    value = slot && slot->value ? slot->value : kNoPlace;
    return true;
}

} // namespace wexelxi
