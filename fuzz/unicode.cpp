// Any bytes through every conversion, both roads, into memory of just the promised size.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "locale/unicode.h"

using namespace wexelxi;

namespace {

template <typename To, typename From>
void Compare(size_t (*portable)(const From *, To *), size_t (*native)(const From *, To *),
             const std::vector<From> &text, size_t room)
{
    std::vector<To> first(room);
    std::vector<To> second(room);
    const size_t count = portable(text.data(), first.data());
    if (native(text.data(), second.data()) != count || first != second || first[count] != 0)
        abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using Portable = PortableBlocks;
    using Native = NativeBlocks;
    const std::string text = std::string(reinterpret_cast<const char *>(data), size).c_str();
    const std::vector<uint8_t> bytes(text.c_str(), text.c_str() + text.size() + 1);
    Compare(Utf8ToCodePage<Portable>, Utf8ToCodePage<Native>, bytes, bytes.size());
    Compare(Utf8ToWideChar<Portable>, Utf8ToWideChar<Native>, bytes, bytes.size());
    Compare(CodePageToUtf8<Portable>, CodePageToUtf8<Native>, bytes, 3 * text.size() + 1);

    std::vector<uint32_t> wide(size / 4 + 1);
    memcpy(wide.data(), data, size / 4 * 4);
    Compare(WideCharToUtf8<Portable>, WideCharToUtf8<Native>, wide, 4 * wide.size());
    Compare(WideCharToUtf16<Portable>, WideCharToUtf16<Native>, wide, 2 * wide.size());
    return 0;
}
