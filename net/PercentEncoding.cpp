#include <Tarvik/net/CommunicationLibrary.h>

#include <string_view>

namespace {

bool isKept(unsigned char c)
{
    constexpr std::string_view marks = "-_.+!*'(),;/?:@=&";
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           marks.find(char(c)) != marks.npos;
}

void appendEscape(std::string &text, unsigned char c)
{
    constexpr char digits[] = "0123456789ABCDEF";
    text += '%';
    text += digits[c >> 4];
    text += digits[c & 15];
}

}  // namespace

std::string CommunicationLibrary::EncodeUrl(const std::string &text)
{
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
        if (isKept(static_cast<unsigned char>(c)))
            result += c;
        else
            appendEscape(result, static_cast<unsigned char>(c));
    }
    return result;
}

std::string CommunicationLibrary::EncodeFormValue(const std::string &text)
{
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
        if (isKept(static_cast<unsigned char>(c)))
            result += c;
        else if (c == ' ')
            result += '+';
        else if (c == '\n')
            result += "%0D%0A";
        else
            appendEscape(result, static_cast<unsigned char>(c));
    }
    return result;
}
