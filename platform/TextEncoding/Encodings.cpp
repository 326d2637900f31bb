#include "platform/TextEncoding/private/Encodings.h"

#include <Tarvik/support/Handle.h>
#include <iconv.h>
#include <langinfo.h>
#include <locale.h>
#include <string.h>
#include <strings.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <unordered_map>
#include <vector>

namespace tarvik::encodings {
namespace {

// clang-format off
using enum Coder;
constexpr auto N = Order::native, B = Order::big, L = Order::little;

// In the order of CFStringGetListOfAvailableEncodings: the common ones, then each family. Two rows may share a converter
// (a Mac OS variant that iconv lacks is not listed: a near relative would give wrong characters).
constexpr Encoding kTable[] = {
    // identifier  Foundation  page coder order max superset iconv            IANA               name
    {0x00000000, 30,         10000, iconv,    N, 1, true,  "MACINTOSH",       "macintosh",       "Western (Mac OS Roman)"},
    {0x00000500, 12,          1252, iconv,    N, 1, true,  "CP1252",          "windows-1252",    "Western (Windows Latin 1)"},
    {0x00000201, 5,          28591, latin1,   N, 1, true,  nullptr,           "iso-8859-1",      "Western (ISO Latin 1)"},
    {0x00000600, 1,          20127, ascii,    N, 1, true,  nullptr,           "us-ascii",        "Western (ASCII)"},
    {0x00000100, 10,          1200, utf16,    N, 2, false, nullptr,           "utf-16",          "Unicode (UTF-16)"},
    {0x08000100, 4,          65001, utf8,     N, 3, true,  nullptr,           "utf-8",           "Unicode (UTF-8)"},
    {0x00000BFF, 7,              0, nonLossy, N, 6, false, nullptr,           nullptr,           "Non-lossy ASCII"},
    {0x10000100, 0x90000100,  1201, utf16,    B, 2, false, nullptr,           "utf-16be",        "Unicode (UTF-16BE)"},
    {0x14000100, 0x94000100,     0, utf16,    L, 2, false, nullptr,           "utf-16le",        "Unicode (UTF-16LE)"},
    {0x0C000100, 0x8C000100,     0, utf32,    N, 4, false, nullptr,           "utf-32",          "Unicode (UTF-32)"},
    {0x18000100, 0x98000100, 12001, utf32,    B, 4, false, nullptr,           "utf-32be",        "Unicode (UTF-32BE)"},
    {0x1C000100, 0x9C000100, 12000, utf32,    L, 4, false, nullptr,           "utf-32le",        "Unicode (UTF-32LE)"},
    {0x04000100, 64,         65000, iconv,    N, 8, false, "UTF-7",           "utf-7",           "Unicode (UTF-7)"},

    {0x00000001, 0,          10001, iconv,    N, 2, false, "SJIS",            "x-mac-japanese",  "Japanese (Mac OS)"},
    {0x00000007, 0,          10007, iconv,    N, 1, true,  "MAC-CYRILLIC",    "x-mac-cyrillic",  "Cyrillic (Mac OS)"},
    {0x0000001D, 0,          10029, iconv,    N, 1, true,  "MAC-CENTRALEUROPE", "x-mac-centraleurroman", "Central European (Mac OS)"},
    {0x00000025, 0,          10079, iconv,    N, 1, true,  "MAC-IS",          "x-mac-icelandic", "Icelandic (Mac OS)"},
    {0x00000098, 0,          10017, iconv,    N, 1, true,  "MAC-UK",          "x-mac-ukrainian", "Ukrainian (Mac OS)"},

    {0x00000202, 9,          28592, iconv,    N, 1, true,  "ISO-8859-2",      "iso-8859-2",      "Central European (ISO Latin 2)"},
    {0x00000203, 51,         28593, iconv,    N, 1, true,  "ISO-8859-3",      "iso-8859-3",      "Western (ISO Latin 3)"},
    {0x00000204, 52,         28594, iconv,    N, 1, true,  "ISO-8859-4",      "iso-8859-4",      "Central European (ISO Latin 4)"},
    {0x00000205, 22,         28595, iconv,    N, 1, true,  "ISO-8859-5",      "iso-8859-5",      "Cyrillic (ISO 8859-5)"},
    {0x00000206, 53,         28596, iconv,    N, 1, true,  "ISO-8859-6",      "iso-8859-6",      "Arabic (ISO 8859-6)"},
    {0x00000207, 54,         28597, iconv,    N, 1, true,  "ISO-8859-7",      "iso-8859-7",      "Greek (ISO 8859-7)"},
    {0x00000208, 55,         28598, iconv,    N, 1, true,  "ISO-8859-8",      "iso-8859-8",      "Hebrew (ISO 8859-8)"},
    {0x00000209, 57,         28599, iconv,    N, 1, true,  "ISO-8859-9",      "iso-8859-9",      "Turkish (ISO Latin 5)"},
    {0x0000020A, 58,             0, iconv,    N, 1, true,  "ISO-8859-10",     "iso-8859-10",     "Nordic (ISO Latin 6)"},
    {0x0000020B, 59,             0, iconv,    N, 1, true,  "ISO-8859-11",     "iso-8859-11",     "Thai (ISO 8859-11)"},
    {0x0000020D, 61,         28603, iconv,    N, 1, true,  "ISO-8859-13",     "iso-8859-13",     "Baltic (ISO Latin 7)"},
    {0x0000020E, 62,             0, iconv,    N, 1, true,  "ISO-8859-14",     "iso-8859-14",     "Celtic (ISO Latin 8)"},
    {0x0000020F, 63,         28605, iconv,    N, 1, true,  "ISO-8859-15",     "iso-8859-15",     "Western (ISO Latin 9)"},
    {0x00000210, 0,              0, iconv,    N, 1, true,  "ISO-8859-16",     "iso-8859-16",     "Romanian (ISO Latin 10)"},

    {0x00000400, 0,            437, iconv,    N, 1, true,  "CP437",           "ibm437",          "Latin-US (DOS)"},
    {0x00000405, 0,            737, iconv,    N, 1, true,  "CP737",           "ibm737",          "Greek (DOS)"},
    {0x00000406, 0,            775, iconv,    N, 1, true,  "CP775",           "ibm775",          "Baltic (DOS)"},
    {0x00000410, 0,            850, iconv,    N, 1, true,  "CP850",           "ibm850",          "Western (DOS Latin 1)"},
    {0x00000412, 0,            852, iconv,    N, 1, true,  "CP852",           "ibm852",          "Central European (DOS Latin 2)"},
    {0x00000413, 0,            855, iconv,    N, 1, true,  "CP855",           "ibm855",          "Cyrillic (DOS)"},
    {0x00000414, 0,            857, iconv,    N, 1, true,  "CP857",           "ibm857",          "Turkish (DOS)"},
    {0x00000415, 0,            860, iconv,    N, 1, true,  "CP860",           "ibm860",          "Portuguese (DOS)"},
    {0x00000416, 0,            861, iconv,    N, 1, true,  "CP861",           "ibm861",          "Icelandic (DOS)"},
    {0x00000417, 0,            862, iconv,    N, 1, true,  "CP862",           "ibm862",          "Hebrew (DOS)"},
    {0x00000418, 0,            863, iconv,    N, 1, true,  "CP863",           "ibm863",          "Canadian French (DOS)"},
    {0x00000419, 0,            864, iconv,    N, 1, false, "CP864",           "ibm864",          "Arabic (DOS)"},
    {0x0000041A, 0,            865, iconv,    N, 1, true,  "CP865",           "ibm865",          "Nordic (DOS)"},
    {0x0000041B, 0,            866, iconv,    N, 1, true,  "CP866",           "ibm866",          "Russian (DOS)"},
    {0x0000041C, 0,            869, iconv,    N, 1, true,  "CP869",           "ibm869",          "Greek (DOS Greek 2)"},
    {0x0000041D, 0,            874, iconv,    N, 1, true,  "CP874",           "windows-874",     "Thai (Windows, DOS)"},
    {0x00000420, 0,            932, iconv,    N, 2, false, "CP932",           "windows-31j",     "Japanese (Windows, DOS)"},
    {0x00000421, 0,            936, iconv,    N, 2, false, "CP936",           "windows-936",     "Simplified Chinese (Windows, DOS)"},
    {0x00000422, 0,            949, iconv,    N, 2, false, "CP949",           "windows-949",     "Korean (Windows, DOS)"},
    {0x00000423, 0,            950, iconv,    N, 2, false, "CP950",           "windows-950",     "Traditional Chinese (Windows, DOS)"},

    {0x00000501, 15,          1250, iconv,    N, 1, true,  "CP1250",          "windows-1250",    "Central European (Windows Latin 2)"},
    {0x00000502, 11,          1251, iconv,    N, 1, true,  "CP1251",          "windows-1251",    "Cyrillic (Windows)"},
    {0x00000503, 13,          1253, iconv,    N, 1, true,  "CP1253",          "windows-1253",    "Greek (Windows)"},
    {0x00000504, 14,          1254, iconv,    N, 1, true,  "CP1254",          "windows-1254",    "Turkish (Windows Latin 5)"},
    {0x00000505, 0,           1255, iconv,    N, 1, true,  "CP1255",          "windows-1255",    "Hebrew (Windows)"},
    {0x00000506, 0,           1256, iconv,    N, 1, true,  "CP1256",          "windows-1256",    "Arabic (Windows)"},
    {0x00000507, 0,           1257, iconv,    N, 1, true,  "CP1257",          "windows-1257",    "Baltic (Windows)"},
    {0x00000508, 0,           1258, iconv,    N, 2, true,  "CP1258",          "windows-1258",    "Vietnamese (Windows)"},
    {0x00000510, 0,           1361, iconv,    N, 2, false, "JOHAB",           "johab",           "Korean (Windows Johab)"},

    {0x00000A01, 8,              0, iconv,    N, 2, false, "CP932",           "shift_jis",       "Japanese (Shift JIS)"},
    {0x00000628, 0,              0, iconv,    N, 4, false, "SHIFT_JISX0213",  "shift_jisx0213",  "Japanese (Shift JIS X0213)"},
    {0x00000920, 3,          51932, iconv,    N, 3, true,  "EUC-JP",          "euc-jp",          "Japanese (EUC)"},
    {0x00000820, 21,         50220, iconv,    N, 8, false, "ISO-2022-JP",     "iso-2022-jp",     "Japanese (ISO 2022-JP)"},
    {0x00000821, 0,              0, iconv,    N, 8, false, "ISO-2022-JP-2",   "iso-2022-jp-2",   "Japanese (ISO 2022-JP-2)"},
    {0x00000823, 0,              0, iconv,    N, 8, false, "ISO-2022-JP-3",   "iso-2022-jp-3",   "Japanese (ISO 2022-JP-3)"},
    {0x00000630, 56,             0, iconv,    N, 2, true,  "EUC-CN",          "gb2312",          "Simplified Chinese (GB 2312)"},
    {0x00000930, 0,          51936, iconv,    N, 2, true,  "EUC-CN",          "euc-cn",          "Simplified Chinese (EUC)"},
    {0x00000631, 0,              0, iconv,    N, 2, false, "GBK",             "gbk",             "Chinese (GBK)"},
    {0x00000632, 0,          54936, iconv,    N, 4, false, "GB18030",         "gb18030",         "Chinese (GB 18030)"},
    {0x00000830, 0,          50227, iconv,    N, 8, false, "ISO-2022-CN",     "iso-2022-cn",     "Chinese (ISO 2022-CN)"},
    {0x00000831, 0,              0, iconv,    N, 8, false, "ISO-2022-CN-EXT", "iso-2022-cn-ext", "Chinese (ISO 2022-CN-EXT)"},
    {0x00000A03, 0,              0, iconv,    N, 2, false, "BIG5",            "big5",            "Traditional Chinese (Big 5)"},
    {0x00000A06, 0,              0, iconv,    N, 2, false, "BIG5-HKSCS",      "big5-hkscs",      "Traditional Chinese (Big 5 HKSCS)"},
    {0x00000931, 0,              0, iconv,    N, 4, true,  "EUC-TW",          "euc-tw",          "Traditional Chinese (EUC)"},
    {0x00000940, 0,          51949, iconv,    N, 2, true,  "EUC-KR",          "euc-kr",          "Korean (EUC)"},
    {0x00000840, 0,          50225, iconv,    N, 8, false, "ISO-2022-KR",     "iso-2022-kr",     "Korean (ISO 2022-KR)"},

    {0x00000A02, 50,         20866, iconv,    N, 1, true,  "KOI8-R",          "koi8-r",          "Cyrillic (KOI8-R)"},
    {0x00000A08, 0,          21866, iconv,    N, 1, true,  "KOI8-U",          "koi8-u",          "Ukrainian (KOI8-U)"},
    {0x00000A07, 0,              0, iconv,    N, 1, false, "VISCII",          "viscii",          "Vietnamese (VISCII)"},
    {0x00000A10, 0,              0, iconv,    N, 8, false, "UTF-7-IMAP",      nullptr,           "Unicode (UTF-7-IMAP)"},
    {0x00000C01, 0,              0, iconv,    N, 1, false, "EBCDIC-US",       "ebcdic-us",       "Western (EBCDIC US)"},
    {0x00000C02, 0,             37, iconv,    N, 1, false, "IBM037",          "ibm037",          "Western (EBCDIC Latin 1)"},
};
// clang-format on

constexpr uint32_t kUTF8 = 0x08000100;
constexpr uint16_t kByteOrderMark = 0xFEFF;

constexpr bool isHigh(uint16_t unit) { return (unit & 0xFC00) == 0xD800; }
constexpr bool isLow(uint16_t unit) { return (unit & 0xFC00) == 0xDC00; }
constexpr uint32_t combine(uint16_t high, uint16_t low)
{
    return 0x10000 + ((high - 0xD800U) << 10) + (low - 0xDC00U);
}

// --- iconv ---------------------------------------------------------------------------------------------

struct ConverterTraits {
    using Value = iconv_t;
    static Value empty() { return reinterpret_cast<iconv_t>(-1); }
    static void close(Value converter) { iconv_close(converter); }
};
using Converter = Handle<ConverterTraits>;

/// The calling thread's converters, each way; they are closed when the thread ends.
iconv_t converter(const char *name, bool toBytes)
{
    struct Pair {
        Converter toBytes, fromBytes;
    };
    thread_local std::unordered_map<std::string_view, Pair> open;
    Pair &pair = open[name];
    Converter &wanted = toBytes ? pair.toBytes : pair.fromBytes;
    if (!wanted)
        wanted.reset(toBytes ? iconv_open(name, "UTF-16LE") : iconv_open("UTF-16LE", name));
    if (wanted)
        ::iconv(wanted.get(), nullptr, nullptr, nullptr, nullptr);  // to the initial shift state
    return wanted.get();
}

// --- writing -------------------------------------------------------------------------------------------

/// Where bytes go: a bounded buffer, or a count.
class Sink {
public:
    Sink(uint8_t *buffer, size_t capacity) : buffer_(buffer), capacity_(buffer ? capacity : SIZE_MAX) {}
    bool put(const uint8_t *bytes, size_t count)
    {
        if (count > capacity_ - used_)
            return false;
        if (buffer_)
            memcpy(buffer_ + used_, bytes, count);
        used_ += count;
        return true;
    }
    uint8_t *place() const { return buffer_ + used_; }
    bool counts() const { return buffer_ == nullptr; }
    size_t room() const { return capacity_ - used_; }
    size_t used() const { return used_; }
    void advance(size_t count) { used_ += count; }

private:
    uint8_t *buffer_;
    size_t capacity_;
    size_t used_ = 0;
};

size_t bytesOfUTF8(uint32_t c, uint8_t *out)
{
    if (c < 0x80) {
        out[0] = uint8_t(c);
        return 1;
    }
    if (c < 0x800) {
        out[0] = uint8_t(0xC0 | c >> 6);
        out[1] = uint8_t(0x80 | (c & 0x3F));
        return 2;
    }
    if (c < 0x10000) {
        out[0] = uint8_t(0xE0 | c >> 12);
        out[1] = uint8_t(0x80 | (c >> 6 & 0x3F));
        out[2] = uint8_t(0x80 | (c & 0x3F));
        return 3;
    }
    out[0] = uint8_t(0xF0 | c >> 18);
    out[1] = uint8_t(0x80 | (c >> 12 & 0x3F));
    out[2] = uint8_t(0x80 | (c >> 6 & 0x3F));
    out[3] = uint8_t(0x80 | (c & 0x3F));
    return 4;
}

size_t bytesOfUnit(uint16_t unit, bool big, uint8_t *out)
{
    out[big ? 0 : 1] = uint8_t(unit >> 8);
    out[big ? 1 : 0] = uint8_t(unit);
    return 2;
}

size_t bytesOfUTF32(uint32_t c, bool big, uint8_t *out)
{
    for (int i = 0; i < 4; ++i)
        out[big ? 3 - i : i] = uint8_t(c >> (8 * i));
    return 4;
}

size_t bytesOfNonLossy(uint16_t unit, uint8_t *out)
{
    if (unit == '\\') {
        out[0] = out[1] = '\\';
        return 2;
    }
    if (unit < 0x80) {
        out[0] = uint8_t(unit);
        return 1;
    }
    if (unit < 0x100) {
        const uint8_t octal[] = {'\\', uint8_t('0' + (unit >> 6)), uint8_t('0' + (unit >> 3 & 7)),
                                 uint8_t('0' + (unit & 7))};
        memcpy(out, octal, sizeof octal);
        return sizeof octal;
    }
    static constexpr char digits[] = "0123456789abcdef";
    const uint8_t hexadecimal[] = {'\\',
                                   'u',
                                   uint8_t(digits[unit >> 12]),
                                   uint8_t(digits[unit >> 8 & 15]),
                                   uint8_t(digits[unit >> 4 & 15]),
                                   uint8_t(digits[unit & 15])};
    memcpy(out, hexadecimal, sizeof hexadecimal);
    return sizeof hexadecimal;
}

/// One character's bytes in an encoding that is coded here; 0 when the encoding lacks it.
size_t bytesOf(const Encoding &encoding, uint32_t c, bool lone, uint8_t *out)
{
    const bool big = encoding.order == Order::big;
    switch (encoding.coder) {
    case ascii: out[0] = uint8_t(c); return c < 0x80;
    case latin1: out[0] = uint8_t(c); return c < 0x100;
    case utf8: return lone ? 0 : bytesOfUTF8(c, out);
    case utf32: return lone ? 0 : bytesOfUTF32(c, big, out);
    case utf16:
    case nonLossy:  // units are written one by one: half a pair survives
        if (c > 0xFFFF) {
            const uint16_t high = uint16_t(0xD800 + ((c - 0x10000) >> 10)),
                           low = uint16_t(0xDC00 + ((c - 0x10000) & 0x3FF));
            if (encoding.coder == utf16)
                return bytesOfUnit(high, big, out) + bytesOfUnit(low, big, out + 2);
            const size_t first = bytesOfNonLossy(high, out);
            return first + bytesOfNonLossy(low, out + first);
        }
        return encoding.coder == utf16 ? bytesOfUnit(uint16_t(c), big, out)
                                       : bytesOfNonLossy(uint16_t(c), out);
    case iconv: break;
    }
    return 0;
}

size_t writeByCharacter(const Encoding &encoding, const uint16_t *units, size_t count, uint8_t lossByte,
                        Sink &sink)
{
    size_t at = 0;
    while (at < count) {
        if (encoding.superset && units[at] < 0x80) {  // a run of ASCII, quickly
            size_t end = at;
            const size_t limit = at + std::min(count - at, sink.room());
            if (sink.counts()) {
                while (end < limit && units[end] < 0x80)
                    ++end;
            } else {
                uint8_t *out = sink.place();
                while (end < limit && units[end] < 0x80)
                    *out++ = uint8_t(units[end++]);
            }
            if (end == at)
                return at;
            sink.advance(end - at);
            at = end;
            continue;
        }
        uint32_t c = units[at];
        size_t taken = 1;
        bool lone = isLow(units[at]) || isHigh(units[at]);
        if (isHigh(units[at]) && at + 1 < count && isLow(units[at + 1])) {
            c = combine(units[at], units[at + 1]);
            taken = 2;
            lone = false;
        }
        uint8_t bytes[12];
        size_t size = bytesOf(encoding, c, lone, bytes);
        if (size == 0 && lossByte) {
            bytes[0] = lossByte;
            size = 1;
        }
        if (size == 0 || !sink.put(bytes, size))
            return at;
        at += taken;
    }
    return at;
}

size_t writeByIconv(const Encoding &encoding, const uint16_t *units, size_t count, uint8_t lossByte,
                    Sink &sink, bool ends)
{
    iconv_t cd = converter(encoding.iconvName, true);
    if (cd == ConverterTraits::empty())
        return 0;
    char *in = const_cast<char *>(reinterpret_cast<const char *>(units));
    size_t left = count * 2;
    char scratch[4096];
    enum class Step { input, end };
    // One call to the converter: into the buffer, or, when bytes are only counted, into the scratch space
    // again and again.
    auto run = [&](Step step) {
        for (;;) {
            char *out = sink.counts() ? scratch : reinterpret_cast<char *>(sink.place());
            const size_t room = sink.counts() ? sizeof scratch : sink.room();
            size_t free = room;
            const size_t result = step == Step::input ? ::iconv(cd, &in, &left, &out, &free)
                                                      : ::iconv(cd, nullptr, nullptr, &out, &free);
            const int why = result == size_t(-1) ? errno : 0;
            sink.advance(room - free);
            if (why != E2BIG || !sink.counts())
                return why;
        }
    };
    while (left > 0) {
        const int why = run(Step::input);
        if (why == 0)
            break;
        if (why == E2BIG || lossByte == 0)
            return count - left / 2;
        // A character that the encoding lacks, or half a pair.
        if (run(Step::end) != 0 || !sink.put(&lossByte, 1))
            return count - left / 2;
        const size_t at = count - left / 2;
        const size_t skipped = isHigh(units[at]) && at + 1 < count && isLow(units[at + 1]) ? 2 : 1;
        in += skipped * 2;
        left -= skipped * 2;
    }
    // A text that can't be ended (no room for the return to the initial state) was not written whole.
    return !ends || run(Step::end) == 0 ? count : count - (count > 0);
}

// --- reading -------------------------------------------------------------------------------------------

void append(std::u16string &text, uint32_t c)
{
    if (c > 0xFFFF) {
        text += char16_t(0xD800 + ((c - 0x10000) >> 10));
        text += char16_t(0xDC00 + ((c - 0x10000) & 0x3FF));
    } else {
        text += char16_t(c);
    }
}

/// RFC 3629, strictly: no overlong forms, no surrogates, nothing above U+10FFFF.
std::optional<std::u16string> readUTF8(const uint8_t *bytes, size_t count)
{
    std::u16string text(count, u'\0');
    char16_t *out = text.data();
    const uint8_t *const end = bytes + count;
    while (bytes < end) {
        const uint8_t lead = *bytes;
        if (lead < 0x80) {
            *out++ = lead;
            ++bytes;
            continue;
        }
        const int more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
        if (lead < 0xC2 || lead > 0xF4 || end - bytes <= more)
            return std::nullopt;
        uint32_t c = lead & (0x3F >> more);
        for (int i = 1; i <= more; ++i) {
            if ((bytes[i] & 0xC0) != 0x80)
                return std::nullopt;
            c = c << 6 | (bytes[i] & 0x3F);
        }
        constexpr uint32_t least[] = {0, 0x80, 0x800, 0x10000};
        if (c < least[more] || c > 0x10FFFF || (c & 0xFFFFF800) == 0xD800)
            return std::nullopt;
        if (c > 0xFFFF) {
            *out++ = char16_t(0xD800 + ((c - 0x10000) >> 10));
            *out++ = char16_t(0xDC00 + ((c - 0x10000) & 0x3FF));
        } else {
            *out++ = char16_t(c);
        }
        bytes += more + 1;
    }
    text.resize(size_t(out - text.data()));
    return text;
}

std::optional<std::u16string> readUTF16(const uint8_t *bytes, size_t count, bool big)
{
    if (count % 2)
        return std::nullopt;
    std::u16string text(count / 2, u'\0');
    for (size_t i = 0; i < text.size(); ++i)
        text[i] = char16_t(bytes[2 * i + (big ? 0 : 1)] << 8 | bytes[2 * i + (big ? 1 : 0)]);
    return text;
}

std::optional<std::u16string> readUTF32(const uint8_t *bytes, size_t count, bool big)
{
    if (count % 4)
        return std::nullopt;
    std::u16string text;
    text.reserve(count / 4);
    for (size_t at = 0; at < count; at += 4) {
        uint32_t c = 0;
        for (int i = 0; i < 4; ++i)
            c = c << 8 | bytes[at + size_t(big ? i : 3 - i)];
        if (c > 0x10FFFF || (c & 0xFFFFF800) == 0xD800)
            return std::nullopt;
        append(text, c);
    }
    return text;
}

std::optional<std::u16string> readNonLossy(const uint8_t *bytes, size_t count)
{
    std::u16string text;
    text.reserve(count);
    for (size_t at = 0; at < count;) {
        if (bytes[at] >= 0x80)
            return std::nullopt;
        if (bytes[at] != '\\') {
            text += char16_t(bytes[at++]);
            continue;
        }
        const bool isUnicode = at + 1 < count && bytes[at + 1] == 'u';
        if (at + 1 < count && bytes[at + 1] == '\\') {
            text += u'\\';
            at += 2;
            continue;
        }
        const size_t first = at + (isUnicode ? 2 : 1), last = first + (isUnicode ? 4 : 3);
        uint32_t value = 0;
        for (at = first; at < last; ++at) {
            if (at >= count)
                return std::nullopt;
            const int digit = bytes[at] >= '0' && bytes[at] <= '9' ? bytes[at] - '0'
                              : (bytes[at] | 32) >= 'a' && (bytes[at] | 32) <= 'f'
                                  ? (bytes[at] | 32) - 'a' + 10
                                  : 99;
            if (digit >= (isUnicode ? 16 : 8))
                return std::nullopt;
            value = value * (isUnicode ? 16 : 8) + uint32_t(digit);
        }
        text += char16_t(value);
    }
    return text;
}

std::optional<std::u16string> readByIconv(const Encoding &encoding, const uint8_t *bytes, size_t count)
{
    iconv_t cd = converter(encoding.iconvName, false);
    if (cd == ConverterTraits::empty())
        return std::nullopt;
    char *in = const_cast<char *>(reinterpret_cast<const char *>(bytes));
    size_t left = count;
    std::u16string text(count + 16, u'\0');
    size_t used = 0;
    for (bool flushing = false;;) {
        char *out = reinterpret_cast<char *>(text.data() + used);
        const size_t room = (text.size() - used) * 2;
        size_t free = room;
        const size_t result =
            flushing ? ::iconv(cd, nullptr, nullptr, &out, &free) : ::iconv(cd, &in, &left, &out, &free);
        used += (room - free) / 2;
        if (result == size_t(-1)) {
            if (errno != E2BIG)
                return std::nullopt;
            text.resize(text.size() * 2);
        } else if (flushing) {
            break;
        } else {
            flushing = true;
        }
    }
    text.resize(used);
    return text;
}

/// Whether the text begins with a byte order mark of that unit width, and which one.
std::optional<bool> markedBig(const uint8_t *bytes, size_t count, size_t width)
{
    if (count < width)
        return std::nullopt;
    static constexpr uint8_t big[] = {0, 0, 0xFE, 0xFF}, little[] = {0xFF, 0xFE, 0, 0};
    if (memcmp(bytes, big + 4 - width, width) == 0)
        return true;
    if (memcmp(bytes, little, width) == 0)
        return false;
    return std::nullopt;
}

}  // namespace

const Encoding *find(uint32_t identifier)
{
    static const auto byIdentifier = [] {
        std::unordered_map<uint32_t, const Encoding *> rows;
        for (const Encoding &encoding : kTable)
            rows.emplace(encoding.identifier, &encoding);
        return rows;
    }();
    const auto found = byIdentifier.find(identifier);
    if (found == byIdentifier.end())
        return nullptr;
    const Encoding *encoding = found->second;
    return encoding->coder != iconv || converter(encoding->iconvName, true) != ConverterTraits::empty()
               ? encoding
               : nullptr;
}

const Encoding *findNamed(std::string_view name)
{
    const std::string wanted(name);
    auto equals = [&](const char *other) { return other && strcasecmp(other, wanted.c_str()) == 0; };
    for (const Encoding &encoding : kTable)
        if (equals(encoding.ianaName))
            return &encoding;
    for (const Encoding &encoding : kTable)
        if (equals(encoding.iconvName))
            return &encoding;
    static constexpr struct {
        const char *alias;
        uint32_t identifier;
    } kAliases[] = {{"utf8", kUTF8},
                    {"ascii", 0x600},
                    {"ansi_x3.4-1968", 0x600},
                    {"latin1", 0x201},
                    {"iso8859-1", 0x201},
                    {"iso_8859-1", 0x201},
                    {"latin2", 0x202},
                    {"mac", 0},
                    {"macroman", 0},
                    {"x-mac-roman", 0},
                    {"sjis", 0xA01},
                    {"shift-jis", 0xA01},
                    {"x-sjis", 0xA01},
                    {"ms_kanji", 0xA01},
                    {"eucjp", 0x920},
                    {"x-euc-jp", 0x920},
                    {"euckr", 0x940},
                    {"cn-big5", 0xA03},
                    {"iso-10646-ucs-2", 0x100},
                    {"unicode", 0x100},
                    {"iso-8859-8-i", 0x208},
                    {"iso-2022-jp-1", 0x821}};
    for (const auto &[alias, identifier] : kAliases)
        if (equals(alias))
            return find(identifier);
    return nullptr;
}

const Encoding *findFoundation(unsigned long foundation)
{
    const auto *row = std::find_if(std::begin(kTable), std::end(kTable), [&](const Encoding &e) {
        return e.foundation == foundation && foundation != 0;
    });
    return row == std::end(kTable) ? nullptr : row;
}

const Encoding *findCodepage(uint32_t codepage)
{
    const auto *row = std::find_if(std::begin(kTable), std::end(kTable), [&](const Encoding &e) {
        return e.codepage == codepage && codepage != 0;
    });
    return row == std::end(kTable) ? nullptr : row;
}

std::span<const uint32_t> available()
{
    static const auto identifiers = [] {
        std::vector<uint32_t> list;
        for (const Encoding &encoding : kTable)
            if (find(encoding.identifier))
                list.push_back(encoding.identifier);
        list.push_back(kInvalid);
        return list;
    }();
    return identifiers;
}

const Encoding &system()
{
    static const Encoding &encoding = [&]() -> const Encoding & {
        const Encoding *named = nullptr;
        if (locale_t user = newlocale(LC_CTYPE_MASK, "", nullptr)) {
            named = findNamed(nl_langinfo_l(CODESET, user));
            freelocale(user);
        }
        return named && named->coder != ascii ? *named : *find(kUTF8);
    }();
    return encoding;
}

Written encode(const Encoding &encoding, const uint16_t *units, size_t count, uint8_t lossByte, bool external,
               uint8_t *buffer, size_t capacity, bool ends)
{
    Sink sink(buffer, capacity);
    if (external && encoding.order == Order::native) {
        uint8_t mark[4];
        if (encoding.coder == utf16 && !sink.put(mark, bytesOfUnit(kByteOrderMark, false, mark)))
            return {0, 0};
        if (encoding.coder == utf32 && !sink.put(mark, bytesOfUTF32(kByteOrderMark, false, mark)))
            return {0, 0};
    }
    const size_t written = encoding.coder == iconv
                               ? writeByIconv(encoding, units, count, lossByte, sink, ends)
                               : writeByCharacter(encoding, units, count, lossByte, sink);
    return {written, sink.used()};
}

std::optional<std::u16string> decode(const Encoding &encoding, const uint8_t *bytes, size_t count,
                                     bool external)
{
    const bool native = encoding.order == Order::native;
    switch (encoding.coder) {
    case ascii:
        if (std::any_of(bytes, bytes + count, [](uint8_t byte) { return byte >= 0x80; }))
            return std::nullopt;
        [[fallthrough]];
    case latin1: return std::u16string(bytes, bytes + count);
    case utf8: {
        static constexpr uint8_t mark[] = {0xEF, 0xBB, 0xBF};
        const size_t skip =
            external && count >= sizeof mark && memcmp(bytes, mark, sizeof mark) == 0 ? sizeof mark : 0;
        return readUTF8(bytes + skip, count - skip);
    }
    case utf16:
    case utf32: {
        const size_t width = encoding.coder == utf16 ? 2 : 4;
        bool big = encoding.order == Order::big;
        if (const auto marked = markedBig(bytes, count, width);
            marked && (native || (external && *marked == big))) {
            big = *marked;
            bytes += width;
            count -= width;
        }
        return width == 2 ? readUTF16(bytes, count, big) : readUTF32(bytes, count, big);
    }
    case nonLossy: return readNonLossy(bytes, count);
    case iconv: return readByIconv(encoding, bytes, count);
    }
    return std::nullopt;
}

}  // namespace tarvik::encodings
