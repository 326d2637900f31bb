#include "Command.h"
#include "Streams.h"

#include <Tarvik/Tarvik.h>

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace {

// --- decode: UTF-8 to code points ----------------------------------------------------------------------

class Decoder {
public:
    explicit Decoder(bool counts) : counts_(counts) {}

    void line(std::string_view line)
    {
        const wstring points = Utils::utf8towstring(std::string(line));
        cut_ = cut_ || line.find('\0') != line.npos;
        count_ += points.size();
        if (counts_)
            return;
        std::string text;
        for (const wchar_t point : points)
            appendForm(text, uint32_t(point));
        if (!text.empty()) {
            text.back() = '\n';
            writeOutput(text);
        }
    }

    void file(const std::string &path)
    {
        Input input(path);
        Progress progress(input.name(), input.length());
        std::string rest;
        for (size_t count = sizeof buffer_; count == sizeof buffer_;) {
            count = input.read(buffer_, sizeof buffer_);
            size_t begin = 0;
            size_t searched = rest.size();  // a line may be as long as the file: look at nothing twice
            rest.append(buffer_, count);
            for (size_t end; (end = rest.find('\n', searched)) != rest.npos; begin = searched = end + 1)
                line(std::string_view(rest).substr(begin, end + 1 - begin));
            rest.erase(0, begin);
            progress.advance(count);
        }
        line(rest);
    }

    int finish() const
    {
        if (counts_)
            writeOutput(std::to_string(count_) + "\n");
        if (!cut_)
            return kSuccess;
        std::fputs("tarvik utf8 decode: a line holds a zero byte: what follows it there is left out\n",
                   stderr);
        return kFailure;
    }

private:
    /// "U+20AC ", with four digits or more.
    static void appendForm(std::string &text, uint32_t point)
    {
        text += "U+";
        for (int shift = point > 0xFFFFF ? 20 : point > 0xFFFF ? 16 : 12; shift >= 0; shift -= 4)
            text += "0123456789ABCDEF"[point >> shift & 0xF];
        text += ' ';
    }

    bool counts_;
    bool cut_ = false;
    uint64_t count_ = 0;
    char buffer_[64 * 1024];
};

int decode(const Arguments &arguments)
{
    Decoder decoder(arguments.has("count"));
    const auto text = arguments.value("text");
    if (text)
        decoder.line(*text);
    for (const std::string &path : arguments.rest())
        decoder.file(path);
    if (!text && arguments.rest().empty())
        decoder.file("-");
    return decoder.finish();
}

// --- encode: code points to UTF-8 ----------------------------------------------------------------------

wchar_t codePoint(std::string_view word)
{
    std::string_view digits = word;
    for (const std::string_view prefix : {"U+", "u+", "0x", "0X"}) {
        if (word.starts_with(prefix))
            digits = word.substr(prefix.size());
    }
    uint32_t point = 0;
    const auto [end, error] = std::from_chars(digits.begin(), digits.end(), point, 16);
    if (error != std::errc() || end != digits.end() || point > 0x10FFFF)
        throw Failure("'" + std::string(word) + "' is no code point (write it in hexadecimal, as U+20AC)");
    return wchar_t(point);
}

void appendCodePoints(wstring &points, std::string_view words)
{
    constexpr std::string_view kSpace = " \t\r\n";
    for (size_t at = words.find_first_not_of(kSpace); at != words.npos;
         at = words.find_first_not_of(kSpace, at)) {
        const size_t end = std::min(words.find_first_of(kSpace, at), words.size());
        points += codePoint(words.substr(at, end - at));
        at = end;
    }
}

int encode(const Arguments &arguments)
{
    wstring points;
    for (const std::string &words : arguments.rest())
        appendCodePoints(points, words);
    if (arguments.rest().empty())
        appendCodePoints(points, readInput("-"));
    writeOutput(Utils::wstring2utf8(points));
    const auto dropped =
        std::count_if(points.begin(), points.end(), [](wchar_t point) { return point > 0xFFFF; });
    if (dropped == 0)
        return kSuccess;
    std::fprintf(stderr, "tarvik utf8 encode: %td above U+FFFF left out: the encoder ends there\n", dropped);
    return kFailure;
}

const Registration registration({
    .name = "utf8",
    .summary = "UTF-8 to code points and back",
    .subcommands =
        {
            {
                .name = "decode",
                .summary = "show the code points of UTF-8 text",
                .usage = "[OPTION]... [FILE]...",
                .details = "Each line is decoded by itself, its end included. Without a FILE, or for -, "
                           "standard input is read.\n"
                           "Damaged text is decoded as well as it goes: a lead byte takes as many bytes as "
                           "it asks for, a stray\n"
                           "continuation byte stands for its low seven bits. A zero byte ends its line (exit "
                           "status 1).\n\n"
                           "Examples:\n  tarvik utf8 decode --text='10 \u20AC'\n  tarvik utf8 decode --count "
                           "/usr/share/dict/words",
                .options = {{'t', "text", "TEXT", "decode TEXT"},
                            {'c', "count", nullptr, "show only how many code points there are in all"}},
                .run = decode,
            },
            {
                .name = "encode",
                .summary = "write code points as UTF-8",
                .usage = "[CODE-POINT]...",
                .details = "A CODE-POINT is hexadecimal: U+20AC, 0x20AC or 20AC. Without any, they are read "
                           "from standard input,\n"
                           "separated by white space. Those above U+FFFF are left out (exit status 1).\n\n"
                           "Examples:\n  tarvik utf8 encode U+48 U+69 U+A\n  tarvik utf8 decode FILE | "
                           "tarvik utf8 encode | cmp - FILE",
                .run = encode,
            },
        },
});

}  // namespace
