#include "platform/CoreFoundation/private/Bridging.h"
#include "platform/CoreFoundation/private/Text.h"
#include "platform/TextEncoding/private/Encodings.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>

using namespace tarvik::cf;
namespace encodings = tarvik::encodings;

namespace {

/// What the compiler makes of @"text": never released, its text is UTF-8.
struct ConstantString {
    Class isa;
    const char *bytes;
    unsigned count;
};

/// The constants made at run time, by their text. They live as long as the process.
class Constants {
public:
    const ConstantString *find(std::string_view text)
    {
        {
            std::shared_lock lock(mutex_);
            if (const auto found = strings_.find(text); found != strings_.end())
                return found->second;
        }
        std::unique_lock lock(mutex_);
        if (const auto found = strings_.find(text); found != strings_.end())
            return found->second;
        // A length byte in front makes a short text a Pascal string too.
        char *bytes = new char[text.size() + 2];
        bytes[0] = char(std::min<size_t>(text.size(), 255));
        memcpy(bytes + 1, text.data(), text.size());
        bytes[text.size() + 1] = 0;
        auto *made = new ConstantString{[NSString constantStringClass], bytes + 1, unsigned(text.size())};
        strings_.emplace(std::string_view(made->bytes, made->count), made);
        return made;
    }

private:
    std::shared_mutex mutex_;
    std::unordered_map<std::string_view, const ConstantString *> strings_;
};

Constants &constants()
{
    static auto *all = new Constants;  // never destroyed: exit handlers use constants too
    return *all;
}

/// The text of a constant string, if its bytes are the text in that encoding.
const ConstantString *constant(CFStringRef string, CFStringEncoding encoding)
{
    if (!string || ![ns(string) isMemberOfClass:[NSString constantStringClass]])
        return nullptr;
    const auto *literal = reinterpret_cast<const ConstantString *>(string);
    if (encoding == kCFStringEncodingUTF8)
        return literal;
    const auto *row = encodings::find(encoding);
    const bool isASCII =
        std::all_of(literal->bytes, literal->bytes + literal->count, [](char c) { return (c & 0x80) == 0; });
    return row && row->superset && isASCII ? literal : nullptr;
}

/// UTF-8 text as it is; other text, which old sources hold, as MacRoman.
std::string utf8Text(const char *text)
{
    const auto *bytes = reinterpret_cast<const uint8_t *>(text);
    const size_t count = strlen(text);
    const auto &utf8 = *encodings::find(kCFStringEncodingUTF8),
               &roman = *encodings::find(kCFStringEncodingMacRoman);
    if (encodings::decode(utf8, bytes, count, false))
        return std::string(text, count);
    const auto units = encodings::decode(roman, bytes, count, false).value_or(u"");
    std::string result(units.size() * 3, '\0');
    const auto written =
        encodings::encode(utf8, reinterpret_cast<const uint16_t *>(units.data()), units.size(), 0, false,
                          reinterpret_cast<uint8_t *>(result.data()), result.size());
    result.resize(written.bytes);
    return result;
}

}  // namespace

CFStringRef __CFStringMakeConstantString(const char *text)
{
    if (!text)
        return nullptr;
    const bool isASCII = std::all_of(text, text + strlen(text), [](char c) { return (c & 0x80) == 0; });
    const ConstantString *string = isASCII ? constants().find(text) : constants().find(utf8Text(text));
    return reinterpret_cast<CFStringRef>(string);
}

const char *CFStringGetCStringPtr(CFStringRef string, CFStringEncoding encoding)
{
    const ConstantString *literal = constant(string, encoding);
    return literal && strlen(literal->bytes) == literal->count ? literal->bytes : nullptr;
}

ConstStringPtr CFStringGetPascalStringPtr(CFStringRef string, CFStringEncoding encoding)
{
    const ConstantString *literal = constant(string, encoding);
    if (!literal || literal->count > 255)
        return nullptr;
    // A literal of the compiler's has no length byte: its twin has one.
    const ConstantString *twin = constants().find(std::string_view(literal->bytes, literal->count));
    return reinterpret_cast<ConstStringPtr>(twin->bytes - 1);
}
