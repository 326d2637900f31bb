#include <Tarvik/core/CString.h>

#include <cstring>
#include <strings.h>

const char *StringGetLastSubstring(const char *text, const char *needle, Boolean ignoreCase)
{
    if (!text || !needle || !*needle)
        return nullptr;
    // From the end: the first hit there is the last one of a search from the start.
    const size_t length = std::strlen(needle), textLength = std::strlen(text);
    if (length > textLength)
        return nullptr;
    for (const char *at = text + (textLength - length);; --at) {
        if (ignoreCase ? strncasecmp(at, needle, length) == 0 : std::memcmp(at, needle, length) == 0)
            return at;
        if (at == text)
            return nullptr;
    }
}

Boolean StringIsEndWith(const char *text, const char *suffix, Boolean ignoreCase)
{
    const char *last = StringGetLastSubstring(text, suffix, ignoreCase);
    return last && (ignoreCase ? strcasecmp(last, suffix) : std::strcmp(last, suffix)) == 0;
}

size_t UTF8StringGetLength(const char *text) { return text ? std::strlen(text) : 0; }
