#include "comm/dcb_text.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "wexelxi/core.h"

namespace wexelxi {

namespace {

constexpr size_t kShortestText = 5;
constexpr size_t kLongestText = 50;

// Gives the tokens of a text one after another; any run of separators stands between two.
class Tokens {
public:
    Tokens(std::string_view text, const char *separators) : rest_(text), separators_(separators) {}

    // The next token, empty behind the last.
    std::string_view Next()
    {
        const size_t start = std::min(rest_.find_first_not_of(separators_), rest_.size());
        rest_.remove_prefix(start);
        const std::string_view token = rest_.substr(0, rest_.find_first_of(separators_));
        rest_.remove_prefix(token.size());
        return token;
    }

private:
    std::string_view rest_;
    const char *separators_;
};

constexpr char UpperCase(char character)
{
    return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A')
                                                : character;
}

// A decimal number as strtol reads it: blanks and a sign may precede, anything may follow.
long Number(std::string_view token)
{
    char digits[kLongestText + 1] = "";
    token.copy(digits, kLongestText);
    return strtol(digits, nullptr, 10);
}

// Stores the parity of a letter of either case; false, and nothing but fParity stored, if it is
// none of the four.
bool StoreParity(char letter, DCB *settings)
{
    constexpr std::string_view kLetters = "NOEM"; // of NOPARITY, ODDPARITY and so on
    const size_t parity = kLetters.find(UpperCase(letter));
    settings->fParity = parity != NOPARITY;
    if (parity == kLetters.npos)
        return false;
    settings->Parity = static_cast<uint8_t>(parity);
    return true;
}

// Stores the stop bits of a digit; false if it is neither 1 nor 2.
bool StoreStopBits(char digit, DCB *settings)
{
    if (digit != '1' && digit != '2')
        return false;
    settings->StopBits = digit == '1' ? ONESTOPBIT : TWOSTOPBITS;
    return true;
}

void StoreFlowControl(char letter, DCB *settings)
{
    const bool software = letter == 'X', hardware = letter == 'P';
    settings->fOutX = settings->fInX = software;
    settings->fOutxCtsFlow = settings->fOutxDsrFlow = hardware;
    settings->fDtrControl = hardware ? DTR_CONTROL_HANDSHAKE : DTR_CONTROL_ENABLE;
    settings->fRtsControl = hardware ? RTS_CONTROL_HANDSHAKE : RTS_CONTROL_ENABLE;
}

// Old teletypes at 110 baud take two stop bits, whatever the text says.
void ApplyTeletypeRule(DCB *settings)
{
    if (settings->BaudRate == 110)
        settings->StopBits = TWOSTOPBITS;
}

// speed, parity, data bits [, stop bits [, flow control]]
uint32_t ParseCommaForm(std::string_view text, DCB *settings)
{
    Tokens fields(text, ", ");
    const long speed = Number(fields.Next());
    if (speed == 0)
        return IE_BAUDRATE;
    settings->BaudRate = static_cast<uint32_t>(speed);

    const std::string_view parity = fields.Next();
    if (parity.empty() || !StoreParity(parity[0], settings))
        return IE_DEFAULT;
    const std::string_view dataBits = fields.Next();
    if (dataBits.empty())
        return IE_DEFAULT;
    settings->ByteSize = static_cast<uint8_t>(dataBits[0] - '0');
    const std::string_view stopBits = fields.Next();
    if (!stopBits.empty() && !StoreStopBits(stopBits[0], settings))
        return IE_DEFAULT;
    const std::string_view flowControl = fields.Next();
    StoreFlowControl(flowControl.empty() ? '\0' : UpperCase(flowControl[0]), settings);
    ApplyTeletypeRule(settings);
    return ERROR_SUCCESS;
}

void StoreSpeed(std::string_view value, DCB *settings)
{
    if (!value.empty() && value.find_first_not_of("0123456789") == value.npos)
        settings->BaudRate = static_cast<uint32_t>(Number(value));
}

void StoreDataBits(std::string_view value, DCB *settings)
{
    if (value.size() == 1 && value[0] >= '5' && value[0] <= '8')
        settings->ByteSize = static_cast<uint8_t>(value[0] - '0');
}

// Tokens word=value, in any order. A value that means nothing stores nothing.
uint32_t ParseKeywordForm(std::string_view text, DCB *settings)
{
    Tokens tokens(text, " ");
    for (std::string_view token = tokens.Next(); !token.empty(); token = tokens.Next()) {
        const std::string_view word = token.substr(0, token.find('='));
        const std::string_view value = token.substr(std::min(word.size() + 1, token.size()));
        if (word.size() == token.size())
            return IE_DEFAULT;
        if (word == "baud")
            StoreSpeed(value, settings);
        else if (word == "data")
            StoreDataBits(value, settings);
        else if (word == "stop")
            StoreStopBits(value.size() == 1 ? value[0] : '\0', settings);
        else if (word == "parity")
            StoreParity(value.empty() ? '\0' : value[0], settings);
        else
            return IE_DEFAULT;
    }
    ApplyTeletypeRule(settings);
    return ERROR_SUCCESS;
}

// Cuts "COMx:" off the text, x being any character but '0'; false if it is malformed.
bool CutPortPrefix(std::string_view *text)
{
    if (strncasecmp(text->data(), "COM", 3) != 0)
        return true;
    if ((*text)[3] == '0' || (*text)[4] != ':')
        return false;
    text->remove_prefix(5);
    return true;
}

} // namespace

uint32_t ParseDcbText(const char *definition, DCB *settings)
{
    if (!definition)
        return IE_DEFAULT;
    std::string_view text(definition, strnlen(definition, kLongestText + 1));
    if (text.size() < kShortestText || text.size() > kLongestText)
        return ERROR_GEN_FAILURE;
    if (!CutPortPrefix(&text))
        return IE_DEFAULT;
    *settings = {};
    settings->DCBlength = sizeof(DCB);
    return text.find(',') != text.npos ? ParseCommaForm(text, settings)
                                       : ParseKeywordForm(text, settings);
}

} // namespace wexelxi
