#include "fonts/extent_cache.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace wexelxi {

static uint32_t HashOf(std::string_view text)
{
    return static_cast<uint32_t>(std::hash<std::string_view>()(text));
}

// The slot that holds the text, or the free one where it belongs.
size_t ExtentCache::Generation::Place(std::string_view text, uint32_t hash) const
{
    const size_t mask = slots_.size() - 1;
    for (size_t place = hash & mask;; place = (place + 1) & mask) {
        const Slot &slot = slots_[place];
        if (slot.length == kNoText)
            return place;
        if (slot.hash == hash && text == std::string_view(bytes_.data() + slot.offset, slot.length))
            return place;
    }
}

const ExtentCache::Slot *ExtentCache::Generation::Find(std::string_view text, uint32_t hash) const
{
    if (count_ == 0)
        return nullptr;
    const Slot &slot = slots_[Place(text, hash)];
    return slot.length == kNoText ? nullptr : &slot;
}

bool ExtentCache::Generation::HasRoomFor(std::string_view text) const
{
    return count_ < kMostTexts && bytes_.size() + text.size() <= kMostBytes;
}

void ExtentCache::Generation::Add(std::string_view text, uint32_t hash, int32_t width)
{
    if (2 * (count_ + 1) > slots_.size())
        Grow();
    Slot &slot = slots_[Place(text, hash)];
    if (slot.length == kNoText) {
        slot = {hash, static_cast<uint32_t>(bytes_.size()), static_cast<uint32_t>(text.size()), 0};
        bytes_ += text;
        count_++;
    }
    slot.width = width;
}

void ExtentCache::Generation::Grow()
{
    std::vector<Slot> taken(std::max(size_t{16}, 2 * slots_.size()), Slot{0, 0, kNoText, 0});
    slots_.swap(taken);
    const size_t mask = slots_.size() - 1;
    for (const Slot &slot : taken) {
        if (slot.length == kNoText)
            continue;
        size_t place = slot.hash & mask;
        while (slots_[place].length != kNoText)
            place = (place + 1) & mask;
        slots_[place] = slot;
    }
}

void ExtentCache::Generation::Clear()
{
    std::fill(slots_.begin(), slots_.end(), Slot{0, 0, kNoText, 0});
    bytes_.clear();
    count_ = 0;
}

std::optional<int32_t> ExtentCache::Find(std::string_view text)
{
    const uint32_t hash = HashOf(text);
    if (const Slot *slot = young_.Find(text, hash))
        return slot->width;
    const Slot *slot = old_.Find(text, hash);
    if (!slot)
        return std::nullopt;
    const int32_t width = slot->width;
    AddToYoung(text, hash, width);
    return width;
}

void ExtentCache::Store(std::string_view text, int32_t width)
{
    if (text.size() <= kLongestText)
        AddToYoung(text, HashOf(text), width);
}

void ExtentCache::Clear()
{
    young_.Clear();
    old_.Clear();
}

void ExtentCache::AddToYoung(std::string_view text, uint32_t hash, int32_t width)
{
    if (!young_.HasRoomFor(text)) {
        std::swap(young_, old_);
        young_.Clear();
    }
    young_.Add(text, hash, width);
}

} // namespace wexelxi
