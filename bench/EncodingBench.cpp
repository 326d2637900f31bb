// Text encodings beside bare iconv on the same units, one buffer each.
#include <Carbon/TextEncodingConverter.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFStringEncodingExt.h>
#include <benchmark/benchmark.h>
#include <iconv.h>

#include <string>
#include <vector>

namespace {

struct Case {
    const char *name;
    CFStringEncoding encoding;
    const char *iconvName;
    const char16_t *sample;
};
const Case kCases[] = {{"MacRoman-1MiB", kCFStringEncodingMacRoman, "MACINTOSH", u"Zürich, déjà vu; "},
                       {"EUC-JP-1MiB", kCFStringEncodingEUC_JP, "EUC-JP", u"日本語の文章、"},
                       {"UTF-8-1MiB", kCFStringEncodingUTF8, "UTF-8", u"Grüße, 日本 and more "}};
constexpr size_t kUnits = 512 * 1024;

std::u16string textOf(const Case &which)
{
    std::u16string text;
    while (text.size() < kUnits)
        text += which.sample;
    text.resize(kUnits);
    return text;
}

void ours(benchmark::State &state, const Case &which)
{
    const std::u16string text = textOf(which);
    std::vector<UInt8> out(text.size() * 4);
    TECObjectRef converter = nullptr;
    TECCreateConverter(&converter, kTextEncodingUnicodeDefault, which.encoding);
    for (auto _ : state) {
        ByteCount in = 0, written = 0;
        if (TECConvertText(converter, reinterpret_cast<const UInt8 *>(text.data()),
                           ByteCount(text.size() * 2), &in, out.data(), ByteCount(out.size()),
                           &written) != noErr)
            state.SkipWithError("not converted");
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(int64_t(state.iterations() * text.size() * 2));
    TECDisposeConverter(converter);
}

void bare(benchmark::State &state, const Case &which)
{
    const std::u16string text = textOf(which);
    std::vector<char> buffer(text.size() * 4);
    iconv_t converter = iconv_open(which.iconvName, "UTF-16LE");
    for (auto _ : state) {
        char *in = const_cast<char *>(reinterpret_cast<const char *>(text.data())), *out = buffer.data();
        size_t left = text.size() * 2, room = buffer.size();
        if (iconv(converter, &in, &left, &out, &room) == size_t(-1))
            state.SkipWithError("not converted");
        benchmark::DoNotOptimize(buffer.data());
    }
    state.SetBytesProcessed(int64_t(state.iterations() * text.size() * 2));
    iconv_close(converter);
}

[[maybe_unused]] const bool registered = [] {
    for (const Case &which : kCases) {
        const std::string name = std::string("encoding/") + which.name;
        benchmark::RegisterBenchmark((name + ":tarvik").c_str(), ours, which);
        benchmark::RegisterBenchmark((name + ":iconv").c_str(), bare, which);
    }
    return true;
}();

}  // namespace
