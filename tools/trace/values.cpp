#include "tools/trace/values.h"

#include <algorithm>
#include <cstring>

#include "tools/trace/kinds.h"
#include "tools/trace/settings.h"

namespace trace {
namespace {

bool IsSigned(std::string_view base)
{
    return base.starts_with("int") || base == "LPARAM" || base == "LRESULT";
}

// Bytes of a number that stands behind a pointer; 0 if it is none.
size_t NumberBytes(const Parameter &parameter)
{
    const std::string_view base = parameter.base();
    if (parameter.type == "char **" || parameter.type == "HGLOBAL *" ||
        parameter.type == "HPRINTER *" || parameter.type == "HPRINTERPPD *" ||
        parameter.type == "UINT_PTR *")
        return 8;
    if (!parameter.isPointer() ||
        !(base.starts_with("int") || base.starts_with("uint") || base == "COLORREF"))
        return 0;
    return base.find("64") != base.npos   ? 8
           : base.find("16") != base.npos ? 2
           : base.find("8") != base.npos  ? 1
                                          : 4;
}

void AddNumber(Line &line, std::string_view base, uint64_t value)
{
    if (IsSigned(base))
        line.Format("%lld", static_cast<long long>(value));
    else if (base.starts_with("uint") || base == "UINT" || base == "WPARAM" || base == "UINT_PTR")
        line.Format("%llu", static_cast<unsigned long long>(value));
    else if (base == "BOOL")
        line.Add(value ? "TRUE" : "FALSE");
    else if (value == UINTPTR_MAX)
        line.Add("INVALID_HANDLE_VALUE");
    else if (value == 0)
        line.Add("null");
    else
        line.Format("0x%llx", static_cast<unsigned long long>(value));
}

void AddNumberBehind(Line &line, const Parameter &parameter, size_t bytes, uintptr_t address)
{
    int64_t number = 0;
    if (ReadMemory(address, &number, bytes) != bytes)
        return AddNumber(line, "void", address);
    if (bytes == 4 && IsSigned(parameter.base()))
        number = static_cast<int32_t>(number);
    line.Add("[");
    AddNumber(line, parameter.base(), static_cast<uint64_t>(number));
    line.Add("]");
}

// At most as many bytes as are asked for and as stand at the address.
void AddBytes(Line &line, uintptr_t address, size_t most, bool isText)
{
    char bytes[1024];
    const size_t shown = std::min<size_t>({most, gSettings.length, sizeof bytes - 1});
    const size_t read = ReadMemory(address, bytes, std::min(most, shown + 1));
    const size_t length = isText ? strnlen(bytes, read) : read;
    // Small numbers stand in for texts in some calls, and bad pointers are told, not followed.
    if (read == 0 && most > 0)
        return AddNumber(line, "void", address);
    line.Quote({bytes, std::min(length, shown)}, length > shown || (!isText && most > shown));
}

// The bytes that a buffer's neighbours say it has; what was read, where a call tells that.
size_t BufferBytes(CallIndex call, size_t index, const uintptr_t *values)
{
    const Signature &signature = kSignatures[call];
    uint32_t count = 0;
    if (call == kReadFile && ReadObject(values[3], count))
        return count;
    if (index + 1 >= signature.count)
        return SIZE_MAX;
    const Parameter &next = signature.parameters[index + 1];
    if (next.name != "count" && next.name != "size" && next.name != "length")
        return SIZE_MAX;
    if (next.isPointer())
        return SIZE_MAX;
    return static_cast<int32_t>(values[index + 1]) < 0 ? 0
                                                       : static_cast<uint32_t>(values[index + 1]);
}

void AddValue(Line &line, CallIndex call, size_t index, const uintptr_t *values)
{
    const Parameter &parameter = kSignatures[call].parameters[index];
    const uintptr_t value = values[index];
    const bool isBuffer = parameter.name == "buffer" && !parameter.isText();
    const size_t bytes = NumberBytes(parameter);
    if (AddConstant(line, kSignatures[call].name, parameter.name, value))
        return;
    if (value != 0 &&
        (parameter.isText() || (isBuffer && BufferBytes(call, index, values) != SIZE_MAX)))
        AddBytes(line, value, BufferBytes(call, index, values), parameter.isText());
    else if (value != 0 && bytes != 0)
        AddNumberBehind(line, parameter, bytes, value);
    else if (value == 0 || !parameter.isPointer() || !AddRecord(line, parameter.base(), value))
        AddNumber(line, parameter.isPointer() ? "void" : parameter.base(), value);
}

// A JSON value: a quoted text and a decimal number stand as they are, all else becomes a text.
void AddAsJson(Line &line, std::string_view text)
{
    const bool isNumber =
        !text.starts_with("0x") && text.find_first_not_of("-0123456789") == text.npos;
    if (isNumber || (text.starts_with('"') && text.ends_with('"')))
        line.Add(text);
    else
        line.Quote(text);
}

} // namespace

bool IsToldBefore(CallIndex call, size_t index)
{
    const Parameter &parameter = kSignatures[call].parameters[index];
    const bool isWritten =
        parameter.isText() || parameter.isPointer() || parameter.name == "buffer";
    return parameter.isConst() || !isWritten || FindDeed(call, kEnds);
}

void AddArgument(Line &line, CallIndex call, size_t index, const uintptr_t *values)
{
    if (!gSettings.json)
        return AddValue(line, call, index, values);
    Line value;
    AddValue(value, call, index, values);
    AddAsJson(line, value.text());
}

void AddResult(Line &line, CallIndex call, uintptr_t result)
{
    const Parameter &type = kSignatures[call].result;
    Line value;
    if (type.type == "void")
        value.Add("void");
    else if (type.isText() && result != 0)
        AddBytes(value, result, SIZE_MAX, true);
    else if (!AddConstant(value, kSignatures[call].name, "", result))
        AddNumber(value, type.isPointer() ? "void" : type.base(), result);
    if (gSettings.json)
        AddAsJson(line, value.text());
    else
        line.Add(value.text());
}

void AddErrorName(Line &line, uint32_t error)
{
    Line name;
    if (AddConstant(name, "SetLastError", "code", error)) {
        line.Add(" ");
        line.Add(name.text());
    }
}

} // namespace trace
