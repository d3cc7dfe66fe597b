// The tree as JSON.
#include <cstdio>

#include "tools/info_value.h"

namespace info {

namespace {

// Length of the well-formed UTF-8 character at the start of the text, or 0.
size_t CharacterLength(std::string_view text)
{
    const auto byte = [&](size_t i) { return static_cast<uint8_t>(text[i]); };
    const uint8_t lead = byte(0);
    const size_t length = lead < 0x80 ? 1 : lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (length == 0 || lead > 0xF4 || length > text.size())
        return 0;
    for (size_t i = 1; i < length; i++)
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
    const bool isOverlong = (lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xF0 && byte(1) < 0x90);
    const bool isOutside = (lead == 0xED && byte(1) > 0x9F) || (lead == 0xF4 && byte(1) > 0x8F);
    return isOverlong || isOutside ? 0 : length;
}

std::string Escaped(uint8_t byte)
{
    char code[8];
    snprintf(code, sizeof code, "\\u%04x", byte);
    return code;
}

std::string Quoted(std::string_view text)
{
    std::string quoted = "\"";
    while (!text.empty()) {
        const char c = text.front();
        size_t length = CharacterLength(text);
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += c;
        } else if (length == 0 || static_cast<uint8_t>(c) < ' ') {
            quoted += Escaped(static_cast<uint8_t>(c));
            length = 1;
        } else {
            quoted += text.substr(0, length);
        }
        text.remove_prefix(length);
    }
    return quoted + "\"";
}

// Items on lines of their own between brackets.
std::string Bracketed(char open, const std::vector<std::string> &items, char close, size_t indent)
{
    std::string text(1, open);
    const std::string inner(indent + 2, ' ');
    for (size_t i = 0; i < items.size(); i++)
        text += (i ? ",\n" : "\n") + inner + items[i];
    if (!items.empty())
        text += "\n" + std::string(indent, ' ');
    return text + close;
}

struct JsonOf {
    size_t indent;

    std::string operator()(std::monostate) const { return "null"; }
    std::string operator()(bool flag) const { return flag ? "true" : "false"; }
    std::string operator()(int64_t number) const { return std::to_string(number); }
    std::string operator()(const std::string &text) const { return Quoted(text); }
    std::string operator()(const Value::List &list) const
    {
        std::vector<std::string> items;
        for (const Value &value : list)
            items.push_back(ToJson(value, indent + 2));
        return Bracketed('[', items, ']', indent);
    }
    std::string operator()(const Value::Record &record) const
    {
        std::vector<std::string> items;
        for (const auto &[name, value] : record)
            items.push_back(Quoted(name) + ": " + ToJson(value, indent + 2));
        return Bracketed('{', items, '}', indent);
    }
};

} // namespace

std::string ToJson(const Value &value, size_t indent)
{
    return std::visit(JsonOf{indent}, value.content);
}

} // namespace info
