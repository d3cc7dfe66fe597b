// One line of output: a buffer of fixed size, so that nothing is allocated while a call is told,
// and nothing is lost when a longjmp passes by.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace trace {

inline constexpr size_t kMostLineBytes = 6000;

class Line {
public:
    void Add(std::string_view text);
    void Format(const char *format, ...) __attribute__((format(printf, 2, 3)));
    // The bytes in quotes; what would break the line is escaped, for JSON in its own way. A text
    // that was cut has three dots behind it, which JSON has a place for in the quotes only.
    void Quote(std::string_view bytes, bool isCut = false);
    std::string_view text() const { return {bytes_, used_}; }
    size_t size() const { return used_; }
    void Cut(size_t size) { used_ = size; }

private:
    char bytes_[kMostLineBytes];
    size_t used_ = 0;
};

// Copies memory that may not be there; gives the bytes that could be read.
size_t ReadMemory(uintptr_t from, void *to, size_t bytes);

// Reads an object; false if it is not there.
template <typename T>
bool ReadObject(uintptr_t from, T &to)
{
    return ReadMemory(from, &to, sizeof to) == sizeof to;
}

} // namespace trace
