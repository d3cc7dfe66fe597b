#include "output.h"

#include "host.h"

void WriteFileWhole(const std::string &path, const std::string &bytes)
{
    Handle file(CreateFile(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                           FILE_ATTRIBUTE_NORMAL, nullptr));
    Check(file.valid(), "CreateFile " + path);
    uint32_t written = 0;
    Check(
        WriteFile(file.get(), bytes.data(), static_cast<uint32_t>(bytes.size()), &written, nullptr),
        "WriteFile " + path);
    // Data may still stand in the stream's buffer: a full disk shows at the close.
    Check(file.close(), "CloseHandle " + path);
}

std::string ReadFileWhole(const std::string &path)
{
    Handle file(CreateFile(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                           FILE_ATTRIBUTE_NORMAL, nullptr));
    Check(file.valid(), "CreateFile " + path);
    std::string bytes(GetFileSize(file.get(), nullptr), '\0');
    uint32_t count = 0;
    Check(ReadFile(file.get(), bytes.data(), static_cast<uint32_t>(bytes.size()), &count, nullptr),
          "ReadFile " + path);
    bytes.resize(count);
    return bytes;
}
