// The note's language: date text by its pictures, and the host's 8-bit code page.
#pragma once

#include <cstdint>
#include <string>

struct Language {
    uint32_t number;              // such as 1033
    std::string name;             // in its own words
    std::string decimalSeparator; // such as ","
    bool german;
};

// The language that WEXELLOCALE or the profile names.
Language ChooseLanguage();

// Now, in local time: a long date and the time, by the language's pictures.
std::string DateAndTime(const Language &language);

// Between UTF-8 and the code page of a Windows application.
std::string ToWindows1252(const std::string &utf8);
std::string ToUtf8(const std::string &windows1252);
