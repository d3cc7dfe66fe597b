// The answers of a sweep in one number, to hold against the one of answers that were judged:
//
//   Digest digest;
//   for (...) {
//       const uint32_t size = GlobalSize(handle); // not in the same call: arguments have no order
//       digest.Add(size, GetLastError(), text);
//   }
//   EXPECT_EQ(digest.hex(), "79269a2ea3756fa0");
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <type_traits>

class Digest {
public:
    template <typename... Values>
    void Add(const Values &...values)
    {
        (AddOne(values), ...);
    }

    std::string hex() const
    {
        char text[17];
        snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(state_));
        return text;
    }

private:
    // Numbers by their value, in eight bytes; all else is text, with its end.
    template <typename T>
    void AddOne(const T &value)
    {
        if constexpr (std::is_same_v<T, char>) {
            AddByte(static_cast<uint8_t>(value)); // which has a sign on some machines
        } else if constexpr (std::is_integral_v<T>) {
            for (int shift = 0; shift < 64; shift += 8)
                AddByte(static_cast<uint8_t>(static_cast<uint64_t>(value) >> shift));
        } else {
            for (const char c : std::string_view(value))
                AddByte(static_cast<uint8_t>(c));
            AddByte(0xFF);
            AddByte(0);
        }
    }
    void AddByte(uint8_t byte) { state_ = (state_ ^ byte) * 0x100000001B3; } // FNV-1a

    uint64_t state_ = 0xCBF29CE484222325;
};
