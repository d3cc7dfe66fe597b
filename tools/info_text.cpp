// The tree as lines for people.
#include <algorithm>

#include "tools/info_value.h"

namespace info {

namespace {

const Value::Record *AsRecord(const Value &value)
{
    return std::get_if<Value::Record>(&value.content);
}

const Value::List *AsList(const Value &value)
{
    return std::get_if<Value::List>(&value.content);
}

bool IsPlain(const Value &value)
{
    return !AsRecord(value) && !AsList(value);
}

// A value that fits on a line: a plain one, or a list of plain ones.
bool IsFlat(const Value &value)
{
    const Value::List *list = AsList(value);
    return list ? std::all_of(list->begin(), list->end(), IsPlain) : IsPlain(value);
}

// Records whose fields all fit on a line, and which have the same fields.
bool IsTable(const Value::List &list)
{
    return std::all_of(list.begin(), list.end(), [&](const Value &row) {
        const Value::Record *record = AsRecord(row);
        const Value::Record *first = AsRecord(list.front());
        return record && first && record->size() == first->size() &&
               std::all_of(record->begin(), record->end(),
                           [](const Value::Field &field) { return IsFlat(field.second); });
    });
}

// A terminal is not to take commands from a font's or a printer's name.
std::string Printable(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](char c) { return static_cast<uint8_t>(c) < ' ' || c == 127; },
        '?');
    return text;
}

std::string Line(const Value &value);

struct LineOf {
    std::string operator()(std::monostate) const { return "-"; }
    std::string operator()(bool flag) const { return flag ? "yes" : "no"; }
    std::string operator()(int64_t number) const { return std::to_string(number); }
    std::string operator()(const std::string &text) const
    {
        return text.empty() ? "(empty)" : Printable(text);
    }
    std::string operator()(const Value::List &list) const
    {
        std::string text;
        for (const Value &value : list)
            text += (text.empty() ? "" : ", ") + Line(value);
        return text.empty() ? "none" : text;
    }
    std::string operator()(const Value::Record &) const { return ""; }
};

std::string Line(const Value &value)
{
    return std::visit(LineOf{}, value.content);
}

// Characters of UTF-8 text, near enough for a column.
size_t Width(const std::string &text)
{
    return static_cast<size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

std::string TableText(const Value::List &list, size_t indent)
{
    std::vector<std::vector<std::string>> rows(1);
    for (const auto &[name, value] : *AsRecord(list.front()))
        rows[0].push_back(name);
    for (const Value &row : list) {
        rows.emplace_back();
        for (const auto &[name, value] : *AsRecord(row))
            rows.back().push_back(Line(value));
    }
    std::vector<size_t> widths(rows[0].size());
    for (const auto &row : rows)
        for (size_t i = 0; i < row.size(); i++)
            widths[i] = std::max(widths[i], Width(row[i]));
    std::string text;
    for (const auto &row : rows) {
        std::string line(indent, ' ');
        for (size_t i = 0; i < row.size(); i++)
            line += row[i] + std::string(widths[i] - Width(row[i]) + 2, ' ');
        text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return text;
}

std::string ListText(const Value::List &list, size_t indent)
{
    if (IsTable(list))
        return TableText(list, indent);
    std::string text;
    for (const Value &value : list)
        text += (text.empty() ? "" : "\n") + ToText(value, indent);
    return text;
}

std::string RecordText(const Value::Record &record, size_t indent)
{
    std::string text;
    for (const auto &[name, value] : record) {
        text += std::string(indent, ' ') + name + ":";
        if (IsFlat(value))
            text += " " + Line(value) + "\n";
        else
            text += "\n" + ToText(value, indent + 2);
    }
    return text;
}

} // namespace

std::string ToText(const Value &value, size_t indent)
{
    if (const Value::Record *record = AsRecord(value))
        return RecordText(*record, indent);
    if (const Value::List *list = AsList(value); list && !IsFlat(value))
        return ListText(*list, indent);
    return std::string(indent, ' ') + Line(value) + "\n";
}

} // namespace info
