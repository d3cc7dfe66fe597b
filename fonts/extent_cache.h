// Widths of texts that were measured before, for one font. Pure; bounded in texts and bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace wexelxi {

// Two generations: texts are stored and found again in the young one; when that is full it becomes
// the old one, and what nobody asks for until it is full again is forgotten.
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
    struct Hash : std::hash<std::string_view> {
        using is_transparent = void;
    };
    using Widths = std::unordered_map<std::string, int32_t, Hash, std::equal_to<>>;

    void MakeRoomFor(size_t bytes);

    Widths young_;
    Widths old_;
    size_t youngBytes_ = 0;
};

} // namespace wexelxi
