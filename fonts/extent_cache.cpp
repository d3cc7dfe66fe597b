#include "fonts/extent_cache.h"

#include <utility>

namespace wexelxi {

std::optional<int32_t> ExtentCache::Find(std::string_view text)
{
    if (const auto found = young_.find(text); found != young_.end())
        return found->second;
    const auto found = old_.find(text);
    if (found == old_.end())
        return std::nullopt;
    auto entry = old_.extract(found);
    const int32_t width = entry.mapped();
    MakeRoomFor(text.size());
    young_.insert(std::move(entry));
    return width;
}

void ExtentCache::Store(std::string_view text, int32_t width)
{
    if (text.size() > kLongestText)
        return;
    MakeRoomFor(text.size());
    young_.insert_or_assign(std::string(text), width);
}

void ExtentCache::Clear()
{
    young_.clear();
    old_.clear();
    youngBytes_ = 0;
}

void ExtentCache::MakeRoomFor(size_t bytes)
{
    if (young_.size() >= kMostTexts || youngBytes_ + bytes > kMostBytes) {
        old_ = std::exchange(young_, {});
        youngBytes_ = 0;
    }
    youngBytes_ += bytes;
}

} // namespace wexelxi
