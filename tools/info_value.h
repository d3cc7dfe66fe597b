// What the command tells: a tree of values, and its two faces, text for people and JSON for
// programs.
#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace info {

// Nothing, a flag, a number, a text, a list, or a record of named values.
struct Value {
    using List = std::vector<Value>;
    using Field = std::pair<std::string, Value>; // a name and what stands under it
    using Record = std::vector<Field>;

    Value() = default;
    Value(bool flag) : content(flag) {}
    Value(std::integral auto number) : content(static_cast<int64_t>(number)) {}
    Value(std::string text) : content(std::move(text)) {}
    Value(const char *text) : content(std::string(text)) {}
    Value(List list) : content(std::move(list)) {}
    Value(Record record) : content(std::move(record)) {}

    std::variant<std::monostate, bool, int64_t, std::string, List, Record> content;
};

// JSON, indented, without a line end behind it. Bytes that are no UTF-8 are taken as Latin-1.
std::string ToJson(const Value &value, size_t indent = 0);

// Lines for people: "name: value", tables for lists of flat records, indented blocks for the rest.
std::string ToText(const Value &value, size_t indent = 0);

} // namespace info
