// UTF-8 to wide strings and back, beside iconv and ICU.
//
// Every contestant makes a new string of its own in each round, as the toolkit's functions do, and gives it back. Sizes are
// bytes read: of UTF-8 for decoding, of four-byte elements for encoding.
//
//   iconv       a descriptor opened, used and closed: like the toolkit's functions, nothing is kept between calls
//   iconv-kept  the descriptor kept: needs one for each thread
//   ICU         u_strFromUTF8 and u_strToUTF32, or u_strFromUTF32 and u_strToUTF8: by way of UTF-16, with the sizes given so
//               that each runs once
//   ICU-macros  a loop of U8_NEXT or U8_APPEND_UNSAFE compiled into the caller
//   fill        no conversion: a result of the same size is filled with one byte, which is what memory allows
//
// Memory of released results stays with the process while we measure. Otherwise each round above 32 MiB would get its pages
// from the kernel anew, which takes longer than any of these conversions, and is the same for all. The rows "fresh" show that.
#include <Tarvik/support/Owned.h>
#include <Tarvik/text/UTF8.h>
#include <benchmark/benchmark.h>
#include <iconv.h>
#include <malloc.h>
#include <unicode/ustring.h>
#include <unicode/utf8.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace {

struct Script {
    const char *name;
    std::string sample;
};

const Script kScripts[] = {
    {"ASCII", "The quick brown fox jumps over the lazy dog; 0123456789. "},
    {"Latin+Greek", "Größe, été, mañana: Ξεσκεπάζω την ψυχοφθόρα βδελυγμία, þið væruð. "},
    {"CJK", "漢字と仮名を交えて書く文章、日本語。天地玄黃宇宙洪荒"},
    {"emoji", "😀😃🚀🎉👍🌍🔥💡🧭🪐"},
};

// As many whole characters of the sample, repeated, as fit.
std::string utf8Text(const Script &script, size_t size)
{
    std::string text;
    for (size_t at = 0;;) {
        size_t length = 1;
        while ((script.sample[at + length] & 0xC0) == 0x80)
            length += 1;
        if (text.size() + length > size)
            return text;
        text.append(script.sample, at, length);
        at = (at + length) % script.sample.size();
    }
}

wstring wideText(const Script &script, size_t size)
{
    wstring text = Utils::utf8towstring(utf8Text(script, size));
    text.resize(std::min(text.size(), size / sizeof(wchar_t)));
    return text;
}

template <class Element>
tarvik::Owned<Element[], std::free> room(size_t count)
{
    return tarvik::Owned<Element[], std::free>(
        static_cast<Element *>(std::malloc((count + 1) * sizeof(Element))));
}

void convert(iconv_t descriptor, const void *in, size_t inBytes, void *out, size_t outBytes)
{
    auto *from = static_cast<char *>(const_cast<void *>(in));
    auto *to = static_cast<char *>(out);
    if (iconv(descriptor, &from, &inBytes, &to, &outBytes) == static_cast<size_t>(-1))
        std::abort();
    benchmark::DoNotOptimize(out);
}

void convertOnce(const char *toCode, const char *fromCode, const void *in, size_t inBytes, void *out,
                 size_t outBytes)
{
    const iconv_t descriptor = iconv_open(toCode, fromCode);
    convert(descriptor, in, inBytes, out, outBytes);
    iconv_close(descriptor);
}

int32_t narrow(size_t size) { return static_cast<int32_t>(size); }

void decodeTarvik(const std::string &text) { benchmark::DoNotOptimize(Utils::utf8towstring(text).data()); }

void decodeIconv(const std::string &text)
{
    const auto out = room<wchar_t>(text.size());
    convertOnce("WCHAR_T", "UTF-8", text.data(), text.size(), out.get(), text.size() * sizeof(wchar_t));
}

void decodeIconvKept(const std::string &text)
{
    static const iconv_t descriptor = iconv_open("WCHAR_T", "UTF-8");
    const auto out = room<wchar_t>(text.size());
    convert(descriptor, text.data(), text.size(), out.get(), text.size() * sizeof(wchar_t));
}

void decodeICU(const std::string &text)
{
    UErrorCode error = U_ZERO_ERROR;
    int32_t units = 0, elements = 0;
    const auto middle = room<UChar>(text.size());
    u_strFromUTF8(middle.get(), narrow(text.size() + 1), &units, text.data(), narrow(text.size()), &error);
    const auto out = room<UChar32>(static_cast<size_t>(units));
    u_strToUTF32(out.get(), units + 1, &elements, middle.get(), units, &error);
    benchmark::DoNotOptimize(out.get());
}

void decodeMacros(const std::string &text)
{
    const auto out = room<UChar32>(text.size());
    UChar32 *to = out.get();
    const auto *from = reinterpret_cast<const uint8_t *>(text.data());
    for (int32_t at = 0, count = narrow(text.size()); at < count; to++)
        U8_NEXT(from, at, count, *to);
    benchmark::DoNotOptimize(out.get());
}

void encodeTarvik(const wstring &text) { benchmark::DoNotOptimize(Utils::wstring2utf8(text).data()); }

void encodeIconv(const wstring &text)
{
    const auto out = room<char>(4 * text.size());
    convertOnce("UTF-8", "WCHAR_T", text.data(), text.size() * sizeof(wchar_t), out.get(), 4 * text.size());
}

void encodeIconvKept(const wstring &text)
{
    static const iconv_t descriptor = iconv_open("UTF-8", "WCHAR_T");
    const auto out = room<char>(4 * text.size());
    convert(descriptor, text.data(), text.size() * sizeof(wchar_t), out.get(), 4 * text.size());
}

void encodeICU(const wstring &text)
{
    UErrorCode error = U_ZERO_ERROR;
    int32_t units = 0, bytes = 0;
    const auto middle = room<UChar>(2 * text.size());
    u_strFromUTF32(middle.get(), narrow(2 * text.size() + 1), &units,
                   reinterpret_cast<const UChar32 *>(text.data()), narrow(text.size()), &error);
    const auto out = room<char>(3 * static_cast<size_t>(units));
    u_strToUTF8(out.get(), 3 * units + 1, &bytes, middle.get(), units, &error);
    benchmark::DoNotOptimize(out.get());
}

void encodeMacros(const wstring &text)
{
    const auto out = room<uint8_t>(4 * text.size());
    size_t at = 0;
    for (const wchar_t element : text)
        U8_APPEND_UNSAFE(out.get(), at, element);
    benchmark::DoNotOptimize(out.get());
}

void fillDecoded(const std::string &text)
{
    static std::pair<const char *, size_t> known;  // counted once for each text
    if (known.first != text.data())
        known = {text.data(), Utils::utf8towstring(text).size()};
    const auto out = room<wchar_t>(known.second);
    std::memset(out.get(), 1, known.second * sizeof(wchar_t));
    benchmark::DoNotOptimize(out.get());
}

void keepMemory(bool keep)
{
    mallopt(M_MMAP_MAX, keep ? 0 : 65536);
    mallopt(M_TRIM_THRESHOLD, keep ? INT32_MAX : 128 << 10);
}

template <class Text>
void add(const std::string &topic, const Script &script, size_t size, const std::string &sizeName,
         const char *who, Text (*makeText)(const Script &, size_t), void (*function)(const Text &),
         bool fresh = false)
{
    benchmark::RegisterBenchmark(
        (topic + "/" + script.name + "-" + sizeName + ":" + who).c_str(),
        [=](benchmark::State &state) {
            const Text text = makeText(script, size);
            keepMemory(!fresh);
            function(text);
            for (auto _ : state)
                function(text);
            keepMemory(false);
            malloc_trim(0);
            state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size() * sizeof text[0]));
        })
        ->MinTime(size <= 1024 ? 0.05 : 0.1);
}

const bool kRegistered = [] {
    static constexpr std::pair<size_t, const char *> kSizes[] = {
        {16, "16B"}, {1 << 10, "1KiB"}, {16 << 20, "16MiB"}};
    for (const Script &script : kScripts) {
        for (const auto &[size, name] : kSizes) {
            add("utf8-decode", script, size, name, "tarvik", utf8Text, decodeTarvik);
            add("utf8-decode", script, size, name, "iconv", utf8Text, decodeIconv);
            add("utf8-decode", script, size, name, "ICU", utf8Text, decodeICU);
            add("utf8-decode", script, size, name, "iconv-kept", utf8Text, decodeIconvKept);
            add("utf8-decode", script, size, name, "ICU-macros", utf8Text, decodeMacros);
            if (size > 1 << 20)
                add("utf8-decode", script, size, name, "fill", utf8Text, fillDecoded);
        }
        for (const auto &[size, name] : kSizes) {
            add("utf8-encode", script, size, name, "tarvik", wideText, encodeTarvik);
            add("utf8-encode", script, size, name, "iconv", wideText, encodeIconv);
            add("utf8-encode", script, size, name, "ICU", wideText, encodeICU);
            add("utf8-encode", script, size, name, "iconv-kept", wideText, encodeIconvKept);
            add("utf8-encode", script, size, name, "ICU-macros", wideText, encodeMacros);
        }
    }
    add("utf8-decode", kScripts[0], 16 << 20, "16MiB-fresh", "tarvik", utf8Text, decodeTarvik, true);
    add("utf8-decode", kScripts[0], 16 << 20, "16MiB-fresh", "iconv", utf8Text, decodeIconv, true);
    return true;
}();

}  // namespace
