// Files that the host writes and reads back, through the library's handles.
#pragma once

#include <string>

void WriteFileWhole(const std::string &path, const std::string &bytes);
std::string ReadFileWhole(const std::string &path);
