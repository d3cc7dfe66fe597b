#include "fonts/extent_cache.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace wexelxi {

namespace {

// Sixteen bytes a step; the last step takes bytes again where the length is no multiple.
uint32_t HashOf(std::string_view text)
{
    __extension__ typedef unsigned __int128 Product;
    constexpr size_t kStep = 2 * sizeof(uint64_t);
    uint64_t hash = text.size();
    const auto mix = [&hash](const char *bytes, size_t count) {
        uint64_t words[2] = {};
        memcpy(words, bytes, count);
        const Product product = Product{words[0] ^ hash} * (words[1] ^ 0x9E3779B97F4A7C15u);
        hash = static_cast<uint64_t>(product >> 64) ^ static_cast<uint64_t>(product);
    };
    if (text.size() < kStep) {
        mix(text.data(), text.size());
    } else {
        for (size_t i = 0; i + kStep < text.size(); i += kStep)
            mix(text.data() + i, kStep);
        mix(text.data() + text.size() - kStep, kStep);
    }
    return static_cast<uint32_t>(hash);
}

} // namespace

// The slot that holds the text, or the free one where it belongs.
size_t ExtentCache::Generation::Place(const Key &key) const
{
    const size_t mask = slots_.size() - 1;
    for (size_t place = key.hash & mask;; place = (place + 1) & mask) {
        const Slot &slot = slots_[place];
        if (slot.length == kNoText)
            return place;
        if (slot.hash == key.hash && slot.face == key.face &&
            key.text == std::string_view(bytes_.data() + slot.offset, slot.length))
            return place;
    }
}

const ExtentCache::Slot *ExtentCache::Generation::Find(const Key &key) const
{
    if (count_ == 0)
        return nullptr;
    const Slot &slot = slots_[Place(key)];
    return slot.length == kNoText ? nullptr : &slot;
}

bool ExtentCache::Generation::HasRoomFor(std::string_view text) const
{
    return count_ < kMostTexts && bytes_.size() + text.size() <= kMostBytes;
}

void ExtentCache::Generation::Add(const Key &key, int32_t width)
{
    if (2 * (count_ + 1) > slots_.size())
        Grow();
    Slot &slot = slots_[Place(key)];
    if (slot.length == kNoText) {
        const auto offset = static_cast<uint32_t>(bytes_.size());
        bytes_ += key.text;
        slot = {key.hash, key.face, offset, static_cast<uint32_t>(key.text.size()), 0};
        count_++;
    }
    slot.width = width;
}

void ExtentCache::Generation::Grow()
{
    std::vector<Slot> taken(std::max(size_t{16}, 2 * slots_.size()), kFree);
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
    std::fill(slots_.begin(), slots_.end(), kFree);
    bytes_.clear();
    count_ = 0;
}

ExtentCache::Key ExtentCache::KeyOf(uint32_t face, std::string_view text)
{
    return {HashOf(text) ^ (face * 0x9E3779B1u), face, text};
}

std::optional<int32_t> ExtentCache::Find(uint32_t face, std::string_view text) noexcept
{
    const Key key = KeyOf(face, text);
    if (const Slot *slot = young_.Find(key))
        return slot->width;
    const Slot *slot = old_.Find(key);
    if (!slot)
        return std::nullopt;
    const int32_t width = slot->width;
    AddToYoung(key, width);
    return width;
}

void ExtentCache::Store(uint32_t face, std::string_view text, int32_t width) noexcept
{
    if (text.size() <= kLongestText)
        AddToYoung(KeyOf(face, text), width);
}

void ExtentCache::AddToYoung(const Key &key, int32_t width) noexcept
{
    if (!young_.HasRoomFor(key.text)) {
        std::swap(young_, old_);
        young_.Clear();
    }
    try {
        young_.Add(key, width);
    } catch (const std::bad_alloc &) {
        // A text that is not remembered is measured anew.
    }
}

} // namespace wexelxi
