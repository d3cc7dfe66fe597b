#include "job.h"

#include <cstdlib>
#include <cstring>

#include "host.h"

static std::string ReadKey(const std::string &file, const char *section, const char *key,
                           const char *otherwise)
{
    char value[512];
    GetPrivateProfileString(section, key, otherwise, value, sizeof value, file.c_str());
    return value;
}

// "12;Flour, 25 kg;236.40"
static Item ParseItem(const std::string &text)
{
    const size_t first = text.find(';');
    const size_t last = text.rfind(';');
    if (first == std::string::npos || first == last)
        throw std::runtime_error("not an item: " + text);
    const double amount = strtod(text.c_str() + last + 1, nullptr);
    return {atoi(text.c_str()), text.substr(first + 1, last - first - 1),
            static_cast<long>(amount * 100 + 0.5)};
}

// A section comes as one text after another, with an empty one at the end.
static std::vector<Item> ReadItems(const std::string &file)
{
    std::vector<char> lines(64 * 1024);
    GetPrivateProfileSection("Items", lines.data(), static_cast<uint32_t>(lines.size()),
                             file.c_str());
    std::vector<Item> items;
    for (const char *line = lines.data(); *line; line += strlen(line) + 1) {
        if (const char *value = strchr(line, '='))
            items.push_back(ParseItem(value + 1));
    }
    return items;
}

Job LoadJob(const std::string &file)
{
    Job job;
    job.file = file;
    job.number = atoi(ReadKey(file, "Note", "Number", "1").c_str());
    job.font = ReadKey(file, "Note", "Font", "DejaVu Sans");
    job.paper = ReadKey(file, "Note", "Paper", "A4");
    job.port = ReadKey(file, "Note", "Port", "");
    job.copies = atoi(ReadKey(file, "Note", "Copies", "1").c_str());
    job.name = ReadKey(file, "Customer", "Name", "");
    job.street = ReadKey(file, "Customer", "Street", "");
    job.city = ReadKey(file, "Customer", "City", "");
    job.items = ReadItems(file);
    if (job.items.empty())
        throw std::runtime_error("no items in " + file);
    return job;
}

void SaveNextNumber(const Job &job)
{
    const std::string next = std::to_string(job.number + 1);
    Check(WritePrivateProfileString("Note", "Number", next.c_str(), job.file.c_str()),
          "WritePrivateProfileString");
}

long Job::TotalCents() const
{
    long total = 0;
    for (const Item &item : items)
        total += item.cents;
    return total;
}

std::string FormatAmount(long cents, const std::string &decimalSeparator)
{
    const std::string digits = std::to_string(cents % 100);
    return std::to_string(cents / 100) + decimalSeparator + (digits.size() < 2 ? "0" : "") + digits;
}
