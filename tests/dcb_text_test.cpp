// Texts of line settings, as a slow twin understands random ones.
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "comm/dcb_text.h"

namespace wexelxi {
namespace {

// The same grammar by the platform's tokeniser, on 28 plain bytes.
struct Twin {
    unsigned char bytes[28];

    void Put(size_t offset, uint32_t value) { memcpy(bytes + offset, &value, 4); }

    bool Parity(int letter)
    {
        bytes[8] |= 2;
        const char *letters = "nNoOeEmM";
        const char *found = letter ? strchr(letters, letter) : nullptr;
        if (found)
            bytes[19] = static_cast<unsigned char>((found - letters) / 2);
        if (found && bytes[19] == 0)
            bytes[8] &= 0xFD;
        return found;
    }

    uint32_t Comma(const std::vector<char *> &fields)
    {
        const long speed = fields.empty() ? 0 : strtol(fields[0], nullptr, 10);
        Put(4, static_cast<uint32_t>(speed));
        if (speed == 0)
            return IE_BAUDRATE;
        if (fields.size() < 2 || !Parity(fields[1][0]) || fields.size() < 3)
            return IE_DEFAULT;
        bytes[18] = static_cast<unsigned char>(fields[2][0] - '0');
        if (fields.size() > 3 && !strchr("12", fields[3][0]))
            return IE_DEFAULT;
        bytes[20] = fields.size() > 3 && fields[3][0] == '2' ? 2 : 0;
        const int flow = fields.size() > 4 ? fields[4][0] | 0x20 : 0;
        Put(8, bytes[8] | (flow == 'x' ? 0x1310u : flow == 'p' ? 0x202Cu : 0x1010u));
        return 0;
    }

    uint32_t Keywords(const std::vector<char *> &tokens)
    {
        for (char *t : tokens) {
            if (!strncmp(t, "parity=", 7))
                Parity(t[7]);
            else if (!strncmp(t, "baud=", 5) && t[5] && !t[5 + strspn(t + 5, "0123456789")])
                Put(4, static_cast<uint32_t>(strtol(t + 5, nullptr, 10)));
            else if (!strncmp(t, "data=", 5) && t[5] >= '5' && t[5] <= '8' && !t[6])
                bytes[18] = static_cast<unsigned char>(t[5] - '0');
            else if (!strcmp(t, "stop=1") || !strcmp(t, "stop=2"))
                bytes[20] = t[5] == '2' ? 2 : 0;
            else if (strncmp(t, "baud=", 5) && strncmp(t, "data=", 5) && strncmp(t, "stop=", 5))
                return IE_DEFAULT;
        }
        return 0;
    }

    uint32_t Parse(std::string text)
    {
        if (text.size() < 5 || text.size() > 50)
            return 31;
        if (!strncasecmp(text.c_str(), "com", 3)) {
            if (text[3] == '0' || text[4] != ':')
                return IE_DEFAULT;
            text.erase(0, 5);
        }
        memset(bytes, 0, sizeof bytes);
        Put(0, 28);
        const bool comma = text.find(',') != text.npos;
        char *save = nullptr;
        std::vector<char *> tokens;
        for (char *t = strtok_r(text.data(), comma ? ", " : " ", &save); t;
             t = strtok_r(nullptr, comma ? ", " : " ", &save))
            tokens.push_back(t);
        const uint32_t fault = comma ? Comma(tokens) : Keywords(tokens);
        uint32_t speed;
        memcpy(&speed, bytes + 4, 4);
        if (fault == 0 && speed == 110)
            bytes[20] = 2;
        return fault;
    }
};

TEST(DcbText, EqualsItsTwinOnRandomTexts)
{
    const char *pieces[] = {
        "COM",   "com", "1",     "0",     ":",       ",",     ",",   " ",
        " ",     "=",   "baud=", "data=", "parity=", "stop=", "110", "9600",
        "n",     "E",   "o",     "M",     "x",       "P",     "8",   "5",
        "COM1:", "2",   "\t",    "\xE9",  "300,e",   "7,2",   "-",   "99999999999"};
    const char *starts[] = {"", "", "", "COM2:", "cOm0:", "CXM1:", "CON1:", "KOM1:", "110,n,8,"};
    std::mt19937 random(28);
    int understood = 0;
    for (int i = 0; i < 200'000; i++) {
        std::string text = starts[random() % std::size(starts)];
        for (size_t count = random() % 14; count > 0; count--)
            text += pieces[random() % std::size(pieces)];
        DCB settings;
        Twin twin;
        memset(&settings, 0xA5, sizeof settings);
        memset(twin.bytes, 0xA5, sizeof twin.bytes);
        const uint32_t fault = ParseDcbText(text.c_str(), &settings);
        ASSERT_EQ(fault, twin.Parse(text)) << text;
        ASSERT_EQ(memcmp(&settings, twin.bytes, sizeof settings), 0) << text;
        understood += fault == 0;
    }
    DCB settings;
    EXPECT_EQ(ParseDcbText(nullptr, &settings), IE_DEFAULT);
    EXPECT_GT(understood, 2000) << "too few random texts get past the grammar";
}

} // namespace
} // namespace wexelxi
