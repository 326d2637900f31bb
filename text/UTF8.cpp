#include <Tarvik/text/UTF8.h>

#include <algorithm>
#include <climits>
#include <sstream>
#include <utility>

#include "text/private/UTF8Kernels.h"
#include "text/private/UTF8Scalar.h"

namespace {

using namespace tarvik::utf8;

/// Up to so many bytes or elements, a call through a pointer costs more than it gains.
constexpr size_t kShortDecoding = 24;
constexpr size_t kShortEncoding = 8;

/// Up to so many bytes or elements are converted in a buffer on the stack, which the result is then made
/// from.
constexpr size_t kMedium = 8192;

/// From this many bytes on, what is written will have left the caches before anybody reads it.
constexpr size_t kStreamed = 24u << 20;

/// A string that grows at the end without being filled with zeros first: C++20 opens a string's storage for
/// plain writing nowhere but in a string buffer, whose put area is the reserved storage of the string that it
/// was made from.
template <class String>
class Storage : std::basic_stringbuf<typename String::value_type, typename String::traits_type> {
    using Buffer = std::basic_stringbuf<typename String::value_type, typename String::traits_type>;
    using Element = typename String::value_type;

public:
    explicit Storage(String &&string) : Buffer(std::move(string), std::ios_base::out | std::ios_base::ate) {}

    static Storage withRoom(String &&string, size_t room)
    {
        string.reserve(string.size() + room);
        return Storage(std::move(string));
    }

    Element *begin() const { return this->pptr(); }
    Element *end() const { return this->epptr(); }

    String take(const Element *reached) &&
    {
        for (ptrdiff_t left = reached - this->pptr(); left > 0; left = reached - this->pptr())
            this->pbump(static_cast<int>(std::min<ptrdiff_t>(left, INT_MAX)));
        return std::move(*this).Buffer::str();
    }
};

/// Guesses the sum of measure(element) over the input from samples evenly spread over it, with something to
/// spare. Cheaper than counting, which would read everything twice; a guess that falls short costs one more
/// allocation.
template <class Element, class Measure>
size_t estimate(const Element *in, size_t count, Measure measure)
{
    constexpr size_t kSample = 64 / sizeof(Element);
    constexpr size_t kStride = 8 * kSample;
    if (count < kStride)
        return count * measure(Element{}) + kBlockRoom;
    const size_t samples = std::min<size_t>(count / kStride, 256);
    const size_t stride = count / samples;
    size_t sum = 0;
    for (size_t sample = 0; sample < samples; sample++) {
        for (size_t i = 0; i < kSample; i++)
            sum += measure(in[sample * stride + i]);
    }
    const double share = static_cast<double>(sum) / static_cast<double>(samples * kSample);
    return static_cast<size_t>(share * static_cast<double>(count) * (1 + 1.0 / 16)) + 4 * kBlockRoom;
}

constexpr size_t startsCharacter(uint8_t byte) { return (byte & 0xC0) != 0x80; }

constexpr size_t encodedLength(wchar_t element)
{
    return element < 0x80 ? 1 : element < 0x800 ? 2 : element <= 0xFFFF ? 3 : 0;
}

[[gnu::noinline]] Utils::wstring decodeLong(DecodeCursor cursor)
{
    Utils::wstring result;
    Stop stop = Stop::OutputFull;
    while (stop == Stop::OutputFull) {
        const size_t room =
            estimate(cursor.in, static_cast<size_t>(cursor.inEnd - cursor.in), startsCharacter);
        auto storage = Storage<Utils::wstring>::withRoom(std::move(result), room);
        cursor.out = storage.begin();
        cursor.outEnd = storage.end();
        cursor.streams = room * sizeof(wchar_t) >= kStreamed;
        stop = decode(bestKernel(), cursor);
        result = std::move(storage).take(cursor.out);
    }
    return result;
}

[[gnu::noinline]] std::string encodeLong(EncodeCursor cursor)
{
    std::string result;
    Stop stop = Stop::OutputFull;
    while (stop == Stop::OutputFull) {
        const size_t room = estimate(cursor.in, static_cast<size_t>(cursor.inEnd - cursor.in), encodedLength);
        auto storage = Storage<std::string>::withRoom(std::move(result), room);
        cursor.out = storage.begin();
        cursor.outEnd = storage.end();
        stop = encode(bestKernel(), cursor);
        result = std::move(storage).take(cursor.out);
    }
    return result;
}

[[gnu::noinline]] Utils::wstring decodeMedium(DecodeCursor cursor)
{
    wchar_t elements[kMedium + kBlockRoom];
    cursor.out = std::begin(elements);
    cursor.outEnd = std::end(elements);
    decode(bestKernel(), cursor);
    return Utils::wstring(elements, static_cast<size_t>(cursor.out - elements));
}

[[gnu::noinline]] std::string encodeMedium(EncodeCursor cursor)
{
    char bytes[3 * kMedium + kBlockRoom];
    cursor.out = std::begin(bytes);
    cursor.outEnd = std::end(bytes);
    encode(bestKernel(), cursor);
    return std::string(bytes, static_cast<size_t>(cursor.out - bytes));
}

bool isShortASCII(const uint8_t *in, size_t count)
{
    if (count < 8 || !allASCII(eightBytes(in + count - 8)))
        return false;
    for (size_t at = 0; at + 8 < count; at += 8) {
        if (!allASCII(eightBytes(in + at)))
            return false;
    }
    return true;
}

Utils::wstring decodeShort(const uint8_t *in, size_t count)
{
    if (isShortASCII(in, count))
        return Utils::wstring(in, in + count);
    wchar_t elements[kShortDecoding];
    wchar_t *out = elements;
    for (const uint8_t *const end = in + count; in < end; out++) {
        const uint32_t codePoint = nextCodePoint(in, end);
        if (codePoint == 0)
            break;
        *out = static_cast<wchar_t>(codePoint);
    }
    return Utils::wstring(elements, static_cast<size_t>(out - elements));
}

std::string encodeShort(const wchar_t *in, size_t count)
{
    char bytes[3 * kShortEncoding];
    char *out = bytes;
    for (size_t i = 0; i < count; i++)
        putCodePoint(in[i], out);
    return std::string(bytes, static_cast<size_t>(out - bytes));
}

}  // namespace

namespace Utils {

wstring utf8towstring(const std::string &text)
{
    const auto *in = reinterpret_cast<const uint8_t *>(text.data());
    const size_t count = text.size();
    if (count <= kShortDecoding)
        return decodeShort(in, count);
    const DecodeCursor cursor{in, in + count, nullptr, nullptr};
    return count <= kMedium ? decodeMedium(cursor) : decodeLong(cursor);
}

std::string wstring2utf8(const wstring &text)
{
    const wchar_t *in = text.data();
    const size_t count = text.size();
    if (count <= kShortEncoding)
        return encodeShort(in, count);
    const EncodeCursor cursor{in, in + count, nullptr, nullptr};
    return count <= kMedium ? encodeMedium(cursor) : encodeLong(cursor);
}

}  // namespace Utils
