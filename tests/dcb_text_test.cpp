// Texts of line settings: rows, and a slow twin over random texts.
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

uint32_t Flags(const DCB &settings)
{
    uint32_t flags;
    memcpy(&flags, reinterpret_cast<const char *>(&settings) + 8, sizeof flags);
    return flags;
}

TEST(DcbText, ReadsBothForms)
{
    const struct {
        const char *text;
        uint32_t speed;
        uint32_t flags;
        int data, parity, stop;
    } rows[] = {
        {"9600,n,8,1", 9600, 0x1010, 8, 0, 0},
        {"COM1:9600,e,7,2,x", 9600, 0x1312, 7, 2, 2},
        {"cOm?:9600,M,7,2,x", 9600, 0x1312, 7, 3, 2},
        {"19200,O,8,1,p", 19200, 0x202E, 8, 1, 0},
        {"19200,O,8,1,Pxx", 19200, 0x202E, 8, 1, 0},
        {"110,n,8,1", 110, 0x1010, 8, 0, 2},
        {"9600,n,8", 9600, 0x1010, 8, 0, 0},
        {"9600 none 8bits,1.5 y", 9600, 0x1010, 8, 0, 0},
        {"-1,n,/,2", 0xFFFFFFFF, 0x1010, 255, 0, 2},
        {"4294967296,n,8", 0, 0x1010, 8, 0, 0}, // judged before it is cut
        {"4294967406,n,8,1", 110, 0x1010, 8, 0, 2},
        {"9223372036854775808,n,8", 0xFFFFFFFF, 0x1010, 8, 0, 0},
        {"COM1:", 0, 0, 0, 0, 0},
        {"     ", 0, 0, 0, 0, 0},
        {"parity=e stop=1", 0, 2, 0, 2, 0},
        {"parity=n", 0, 0, 0, 0, 0},
        {"parity=Odd parity=?", 0, 2, 0, 1, 0}, // the unknown letter leaves what was there
        {"parity=", 0, 2, 0, 0, 0},
        {"COM2:baud=9600  data=7 stop=2 parity=M", 9600, 2, 7, 3, 2},
        {"baud=110 stop=1", 110, 0, 0, 0, 2},
        {"data=8 data=9 data=88 data= data=4", 0, 0, 8, 0, 0},
        {"stop=2 stop=3 stop=1.5 stop=", 0, 0, 0, 0, 2},
        {"baud=300 baud=fast baud=-5 baud= baud=9x", 300, 0, 0, 0, 0},
    };
    for (const auto &row : rows) {
        DCB settings;
        memset(&settings, 0xA5, sizeof settings);
        EXPECT_EQ(ParseDcbText(row.text, &settings), 0u) << row.text;
        DCB expected = {};
        expected.DCBlength = 28;
        expected.BaudRate = row.speed;
        memcpy(reinterpret_cast<char *>(&expected) + 8, &row.flags, sizeof row.flags);
        expected.ByteSize = static_cast<uint8_t>(row.data);
        expected.Parity = static_cast<uint8_t>(row.parity);
        expected.StopBits = static_cast<uint8_t>(row.stop);
        EXPECT_EQ(memcmp(&settings, &expected, sizeof settings), 0)
            << row.text << " gives " << settings.BaudRate << " flags " << std::hex
            << Flags(settings) << " data " << int{settings.ByteSize} << " parity "
            << int{settings.Parity} << " stop " << int{settings.StopBits};
    }
}

TEST(DcbText, RefusesAndLeavesTheRecordAsFarAsItGot)
{
    const struct {
        const char *text;
        uint32_t fault;
        bool touched;
        uint32_t speed;
    } rows[] = {
        {nullptr, IE_DEFAULT, false, 0},
        {"", 31, false, 0},
        {"abc", 31, false, 0},
        {"96,n", 31, false, 0},
        {"COM0:9600,n,8,1", IE_DEFAULT, false, 0},
        {"COM12:9600,n,8,1", IE_DEFAULT, false, 0},
        {"COM1 9600,n,8,1", IE_DEFAULT, false, 0},
        {"0,n,8,1", IE_BAUDRATE, true, 0},
        {",,,,,", IE_BAUDRATE, true, 0},
        {"\t 9600,n,8", IE_BAUDRATE, true, 0}, // a tab is a field
        {"n,9600,8", IE_BAUDRATE, true, 0},
        {"9600,", IE_DEFAULT, true, 9600},
        {"9600,n", IE_DEFAULT, true, 9600},
        {"9600,q,8,1", IE_DEFAULT, true, 9600},
        {"9600,,8,1", IE_DEFAULT, true, 9600}, // the empty field does not count
        {"9600,n,8,3", IE_DEFAULT, true, 9600},
        {"speed=9600", IE_DEFAULT, true, 0},
        {"Baud=9600", IE_DEFAULT, true, 0},
        {"parity =e", IE_DEFAULT, true, 0},
        {"baud=9600\tdata=8", 0, true, 0}, // no number, as a tab is no blank
        {"baud=9600 parity", IE_DEFAULT, true, 9600},
    };
    for (const auto &row : rows) {
        DCB settings;
        memset(&settings, 0xA5, sizeof settings);
        EXPECT_EQ(ParseDcbText(row.text, &settings), row.fault) << row.text;
        EXPECT_EQ(settings.DCBlength, row.touched ? 28u : 0xA5A5A5A5u) << row.text;
        EXPECT_EQ(settings.BaudRate, row.touched ? row.speed : 0xA5A5A5A5u) << row.text;
    }
    const std::string blanks(100, ' ');
    for (const size_t length : {4, 5, 50, 51}) {
        DCB settings;
        EXPECT_EQ(ParseDcbText(blanks.substr(0, length).c_str(), &settings),
                  length == 5 || length == 50 ? 0u : 31u);
    }
}

// The same grammar by the platform's tokeniser and by offsets into 28 plain bytes.
struct Twin {
    unsigned char bytes[28];

    void Put(size_t offset, uint32_t value) { memcpy(bytes + offset, &value, 4); }
    uint32_t Get(size_t offset) const
    {
        uint32_t value;
        memcpy(&value, bytes + offset, 4);
        return value;
    }

    bool Parity(int letter)
    {
        Put(8, Get(8) | 2);
        const char *found = letter ? strchr("nNoOeEmM", letter) : nullptr;
        if (!found)
            return false;
        bytes[19] = static_cast<unsigned char>((found - strchr("nNoOeEmM", 'n')) / 2);
        if (bytes[19] == 0)
            Put(8, Get(8) & ~2u);
        return true;
    }

    uint32_t Comma(char *text)
    {
        char *save = nullptr;
        std::vector<char *> fields;
        for (char *f = strtok_r(text, ", ", &save); f; f = strtok_r(nullptr, ", ", &save))
            fields.push_back(f);
        const long speed = fields.empty() ? 0 : strtol(fields[0], nullptr, 10);
        Put(4, static_cast<uint32_t>(speed));
        if (speed == 0)
            return IE_BAUDRATE;
        if (fields.size() < 2 || !Parity(fields[1][0]) || fields.size() < 3)
            return IE_DEFAULT;
        bytes[18] = static_cast<unsigned char>(fields[2][0] - '0');
        if (fields.size() > 3) {
            if (fields[3][0] != '1' && fields[3][0] != '2')
                return IE_DEFAULT;
            bytes[20] = fields[3][0] == '2' ? 2 : 0;
        }
        const int flow = fields.size() > 4 ? fields[4][0] | 0x20 : 0;
        Put(8, Get(8) | (flow == 'x' ? 0x1310u : flow == 'p' ? 0x202Cu : 0x1010u));
        return 0;
    }

    uint32_t Keywords(char *text)
    {
        char *save = nullptr;
        for (char *t = strtok_r(text, " ", &save); t; t = strtok_r(nullptr, " ", &save)) {
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

    uint32_t Parse(const std::string &definition)
    {
        if (definition.size() < 5 || definition.size() > 50)
            return 31;
        char copy[51];
        strcpy(copy, definition.c_str());
        char *text = copy;
        if (!strncasecmp(text, "com", 3)) {
            if (text[3] == '0' || text[4] != ':')
                return IE_DEFAULT;
            text += 5;
        }
        memset(bytes, 0, sizeof bytes);
        Put(0, 28);
        const uint32_t fault = strchr(text, ',') ? Comma(text) : Keywords(text);
        if (fault == 0 && Get(4) == 110)
            bytes[20] = 2;
        return fault;
    }
};

TEST(DcbText, EqualsItsTwinOnRandomTexts)
{
    const char *pieces[] = {"COM",   "com", "1",     "0",     ":",       ",",     ",",
                            " ",     " ",   "baud=", "data=", "parity=", "stop=", "9600",
                            "110",   "n",   "E",     "o",     "M",       "x",     "P",
                            "8",     "5",   "2",     "-",     "=",       "9",     "\t",
                            "COM1:", ".",   "\xE9",  "7,2",   "300,e",   "y",     "99999999999"};
    std::mt19937 random(28);
    int understood = 0;
    for (int i = 0; i < 200'000; i++) {
        std::string text = random() % 4 == 0 ? "COM2:" : "";
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
    EXPECT_GT(understood, 2000) << "too few random texts get past the grammar";
}

} // namespace
} // namespace wexelxi
