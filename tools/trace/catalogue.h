// What can be traced: each exported function with its family, its result and its parameters, read
// out of the table of calls at compile time.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace trace {

// kInitLib and so on, in the order of the table.
enum CallIndex : int {
#define CALL(family, result, name, parameters, arguments) k##name,
#define VARIADIC CALL
#include "tools/trace/calls.def"
    kCallCount
};

struct Parameter {
    std::string_view type; // as the header spells it
    std::string_view name;

    constexpr bool isConst() const { return type.starts_with("const ") || type.starts_with("LPC"); }
    // The type without const and without what makes it a pointer.
    constexpr std::string_view base() const
    {
        std::string_view text = type;
        if (text.starts_with("const "))
            text.remove_prefix(6);
        if (text == "LPDEVMODE")
            return "DEVMODE";
        return text.substr(0, text.find(' '));
    }
    constexpr bool isPointer() const { return type.ends_with('*') || type == "LPDEVMODE"; }
    constexpr bool isText() const
    {
        return type == "const char *" || type == "char *" || type == "LPCSTR" || type == "LPSTR";
    }
};

constexpr size_t kMostParameters = 14;

struct Signature {
    std::string_view family;
    Parameter result;
    std::string_view name;
    std::array<Parameter, kMostParameters> parameters{};
    size_t count = 0;
};

constexpr Parameter ParseParameter(std::string_view text)
{
    const size_t behind = text.find_last_of(" *") + 1;
    std::string_view type = text.substr(0, behind);
    while (type.ends_with(' '))
        type.remove_suffix(1);
    return {type, text.substr(behind)};
}

// Reads a list such as "(const char *name, uint32_t access)".
constexpr Signature ParseSignature(std::string_view family, std::string_view result,
                                   std::string_view name, std::string_view list)
{
    Signature signature{family, {result, ""}, name};
    list = list.substr(1, list.size() - 2);
    while (!list.empty() && list != "void" && list != "...") {
        const size_t comma = list.find(", ");
        signature.parameters[signature.count++] = ParseParameter(list.substr(0, comma));
        list = comma == list.npos ? "" : list.substr(comma + 2);
    }
    return signature;
}

inline constexpr Signature kSignatures[kCallCount] = {
#undef CALL
#define CALL(family, result, name, parameters, arguments) \
    ParseSignature(family, #result, #name, #parameters),
#include "tools/trace/calls.def"
#undef CALL
#undef VARIADIC
};

} // namespace trace
