// Widths of texts that were measured before, for one font. Pure; bounded in texts and bytes.
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
// of open addresses points at them.
class ExtentCache {
public:
    // A longer text is not kept.
    static constexpr size_t kLongestText = 16 * 1024;
    // Bounds of each generation.
    static constexpr size_t kMostTexts = 2048;
    static constexpr size_t kMostBytes = 64 * 1024;

    std::optional<int32_t> Find(std::string_view text);
    void Store(std::string_view text, int32_t width);
    void Clear();

private:
    struct Slot {
        uint32_t hash;
        uint32_t offset;
        uint32_t length; // kNoText where the slot is free
        int32_t width;
    };
    static constexpr uint32_t kNoText = UINT32_MAX;

    class Generation {
    public:
        const Slot *Find(std::string_view text, uint32_t hash) const;
        bool HasRoomFor(std::string_view text) const;
        void Add(std::string_view text, uint32_t hash, int32_t width);
        void Clear();

    private:
        size_t Place(std::string_view text, uint32_t hash) const;
        void Grow();

        std::vector<Slot> slots_; // none, or a power of two of which at most half is taken
        std::string bytes_;
        size_t count_ = 0;
    };

    void AddToYoung(std::string_view text, uint32_t hash, int32_t width);

    Generation young_;
    Generation old_;
};

} // namespace wexelxi
