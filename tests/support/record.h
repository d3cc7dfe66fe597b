// Settings records laid out by hand, byte by byte, at an odd address, with nothing readable behind
// them: what the library may not touch, AddressSanitizer shows.
#pragma once

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "wexelxi/devmode.h"

struct TestValue {
    std::string name;
    std::string text;
    bool selected = false;
};

struct TestOption {
    std::string keyword;
    std::string text;
    int16_t kind;
    std::vector<TestValue> values;
};

// A number's bytes, lowest first.
inline std::string Number(int64_t number, size_t width)
{
    std::string bytes(width, '\0');
    for (size_t i = 0; i < width; i++)
        bytes[i] = static_cast<char>(number >> (8 * i));
    return bytes;
}

inline std::string NodeBytes(const TestOption &option)
{
    size_t nameWidth = 1;
    size_t textWidth = 1;
    for (const TestValue &value : option.values) {
        nameWidth = std::max(nameWidth, value.name.size() + 1);
        textWidth = std::max(textWidth, value.text.size() + 1);
    }
    std::string parts = option.keyword + '\0' + option.text + '\0';
    for (const TestValue &value : option.values) {
        parts += static_cast<char>(value.selected);
        parts += value.name + std::string(nameWidth - value.name.size(), '\0');
        parts += value.text + std::string(textWidth - value.text.size(), '\0');
    }
    std::string header = Number(static_cast<int64_t>(20 + parts.size()), 4);
    for (size_t number : {static_cast<size_t>(option.kind), option.keyword.size() + 1,
                          option.text.size() + 1, nameWidth, textWidth, option.values.size()})
        header += Number(static_cast<int64_t>(number), 2);
    return header + Number(0, 4) + parts;
}

class TestRecord {
public:
    // A head of headBytes with all fields 0 but the name and the two lengths, and the block.
    explicit TestRecord(const std::vector<TestOption> &options = {}, size_t headBytes = 516,
                        const std::string &name = "printer")
    {
        std::string bytes(std::max<size_t>(headBytes, 392), '\0');
        bytes.replace(0, name.size(), name);
        std::string block;
        for (const TestOption &option : options)
            block += NodeBytes(option);
        bytes.replace(388, 2, Number(static_cast<int64_t>(headBytes), 2));
        bytes.replace(390, 2, Number(static_cast<int64_t>(block.size()), 2));
        Place(bytes + block);
    }
    explicit TestRecord(const std::string &bytes) { Place(bytes); }

    DEVMODE *get() const { return reinterpret_cast<DEVMODE *>(data()); }
    DEVMODE *operator->() const { return get(); }
    char *data() const { return memory_.get() + 1; }
    size_t size() const { return size_; }
    std::string bytes() const { return {data(), size_}; }

private:
    void Place(const std::string &bytes)
    {
        size_ = bytes.size();
        memory_ = std::make_unique<char[]>(size_ + 1);
        bytes.copy(data(), size_);
    }

    std::unique_ptr<char[]> memory_;
    size_t size_ = 0;
};

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

// Values named by the letters of names, those of selected being selected.
inline std::vector<TestValue> Values(const std::string &names, const std::string &selected = "")
{
    std::vector<TestValue> values;
    for (char name : names)
        values.push_back({{name}, "Text", selected.find(name) != std::string::npos});
    return values;
}
