// Settings records laid out by hand, byte by byte, at an odd address, with nothing readable behind
// them: what the library may not touch, AddressSanitizer shows.
#pragma once

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include "wexelxi/devmode.h"

// A number's bytes, lowest first.
inline std::string Number(int64_t number, size_t width)
{
    std::string bytes(width, '\0');
    for (size_t i = 0; i < width; i++)
        bytes[i] = static_cast<char>(number >> (8 * i));
    return bytes;
}

// The node of an option. Its values are named by the letters of values; those of selected are.
inline std::string Node(int16_t kind, const std::string &keyword, const std::string &values,
                        const std::string &selected = "")
{
    std::string parts = keyword + '\0' + "Words" + '\0';
    for (const char value : values) {
        parts += static_cast<char>(selected.find(value) != std::string::npos);
        parts += std::string{value, '\0', 'T', value, '\0'};
    }
    std::string header = Number(static_cast<int64_t>(20 + parts.size()), 4) + Number(kind, 2);
    for (const size_t number : {keyword.size() + 1, sizeof "Words", size_t{2}, size_t{3},
                                values.size(), size_t{0}, size_t{0}})
        header += Number(static_cast<int64_t>(number), 2);
    return header + parts;
}

// The selected bytes of an option's rows, one digit a row.
inline std::string Selected(const DEVMODEOPTION *option)
{
    std::string digits;
    const DEVMODEVALUE *value = GetFirstDevModeOptionValue(option);
    for (int i = 0; i < option->valueCount; i++) {
        digits += static_cast<char>('0' + value->selected);
        value = GetNextDevModeOptionValue(option, value);
    }
    return digits;
}

class TestRecord {
public:
    explicit TestRecord(const std::string &bytes)
        : memory_(std::make_unique<char[]>(bytes.size() + 1)), size_(bytes.size())
    {
        bytes.copy(data(), size_);
    }
    // A head of that many bytes with all fields 0 but the name and the two lengths, and nodes.
    TestRecord(size_t head, const std::string &nodes, const std::string &name = "printer")
        : TestRecord(std::string(std::max<size_t>(head, 392), '\0') + nodes)
    {
        name.copy(data(), name.size());
        get()->dmSize = static_cast<uint16_t>(head);
        get()->dmDriverExtra = static_cast<uint16_t>(nodes.size());
    }

    DEVMODE *get() const { return reinterpret_cast<DEVMODE *>(data()); }
    DEVMODE *operator->() const { return get(); }
    char *data() const { return memory_.get() + 1; }
    size_t size() const { return size_; }
    std::string bytes() const { return {data(), size_}; }

private:
    std::unique_ptr<char[]> memory_;
    size_t size_;
};
