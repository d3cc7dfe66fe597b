// Widths of texts that were measured before, for all faces together. Pure; bounded in texts and
// bytes, so that it never takes more than 4 MiB.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wexelxi {

// Two generations: texts are stored and found again in the young one; when that is full it becomes
// the old one, and what nobody asks for until it is full again is forgotten. To store a text costs
// next to nothing beside measuring it: the texts of a generation stand in one string, and a table
// of open addresses points at them. A face is known by its number, which no other face gets, so the
// texts of one that is gone are in nobody's way. Where memory runs out, less is remembered.
class ExtentCache {
public:
    // A longer text is not kept.
    static constexpr size_t kLongestText = 16 * 1024;
    // Bounds of each generation. A string and a table may take twice what they hold.
    static constexpr size_t kMostTexts = 16 * 1024;
    static constexpr size_t kMostBytes = 512 * 1024;

    std::optional<int32_t> Find(uint32_t face, std::string_view text) noexcept;
    void Store(uint32_t face, std::string_view text, int32_t width) noexcept;

private:
    struct Slot {
        uint32_t hash;
        uint32_t face;
        uint32_t offset;
        uint32_t length; // kNoText where the slot is free
        int32_t width;
    };
    static constexpr uint32_t kNoText = UINT32_MAX;
    static constexpr Slot kFree = {0, 0, 0, kNoText, 0};
    static_assert(2 * (2 * kMostTexts * sizeof(Slot) + 2 * kMostBytes) <= 4 << 20);

    struct Key {
        uint32_t hash;
        uint32_t face;
        std::string_view text;
    };
    static Key KeyOf(uint32_t face, std::string_view text);

    class Generation {
    public:
        const Slot *Find(const Key &key) const;
        bool HasRoomFor(std::string_view text) const;
        void Add(const Key &key, int32_t width);
        void Clear();

    private:
        size_t Place(const Key &key) const;
        void Grow();

        std::vector<Slot> slots_; // none, or a power of two of which at most half is taken
        std::string bytes_;
        size_t count_ = 0;
    };

    void AddToYoung(const Key &key, int32_t width) noexcept;

    Generation young_;
    Generation old_;
};

} // namespace wexelxi
