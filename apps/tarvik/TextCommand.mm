#include "ObjectiveC.h"
#include "Streams.h"

#import <Foundation/Foundation.h>
#include <Tarvik/Tarvik.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>

#include <cstdio>

namespace {

/// The file named as the argument at an index, or standard input.
NSString *input(const Arguments &arguments, size_t index)
{
    return textInFile(index < arguments.rest().size() ? arguments.rest()[index] : "-");
}

int lines(const Arguments &arguments)
{
    arguments.rest(0, 1);
    NSMutableArray *lines = [input(arguments, 0) lines];
    if (arguments.has("count")) {
        std::printf("%lu\n", (unsigned long)[lines count]);
        return kSuccess;
    }
    // What ends the last line is not a line of its own here.
    if ([[lines lastObject] length] == 0)
        [lines removeLastObject];
    std::string out;
    size_t number = 0;
    for (NSString *line : tarvik::each<NSString>(lines)) {
        if (arguments.has("number"))
            out += std::to_string(++number) + "\t";
        out += utf8Of(line) + "\n";
    }
    writeOutput(out);
    return kSuccess;
}

int hex(const Arguments &arguments)
{
    const std::string &digits = arguments.rest(1, 1)[0];
    NSData *data = [textOf(digits) dataFromHexadecimalString];
    if (!data)
        throw Failure("'" + digits + "': is not hexadecimal (digits and the letters a to f only)");
    writeOutput(tarvik::bytes(data).value_or(""));
    return kSuccess;
}

int ostype(const Arguments &arguments)
{
    constexpr size_t kDigits = 8;
    for (const std::string &word : arguments.rest(1)) {
        OSType code = 0;
        if (word.size() == 2 + kDigits && word.compare(0, 2, "0x") == 0) {
            NSData *bytes = [textOf(word.substr(2)) dataFromHexadecimalString];
            for (unsigned char byte : tarvik::bytes(bytes).value_or(""))
                code = code << 8 | byte;
        } else {
            code = [textOf(word) OSType];
        }
        NSString *text = [NSString stringWithOSType:code];
        if (code == 0 || !text)
            throw Failure("'" + word +
                          "': is no type code (four MacRoman characters, or 0x and eight digits)");
        std::printf("0x%08X '%s'\n", code, utf8Of(text).c_str());
    }
    return kSuccess;
}

int number(const Arguments &arguments)
{
    for (const std::string &word : arguments.rest(1))
        std::printf("%d\n", [[textOf(word) intNumber] intValue]);
    return kSuccess;
}

int replace(const Arguments &arguments)
{
    const auto &words = arguments.rest(2, 3);
    if (words[0].empty())
        throw UsageError("the text to find is empty");
    NSMutableString *text = [NSMutableString stringWithString:input(arguments, 2)];
    const uint32_t count = [text find:textOf(words[0]) andReplaceAll:textOf(words[1])];
    if (arguments.has("count"))
        std::printf("%u\n", count);
    else
        writeOutput(utf8Of(text));
    return kSuccess;
}

int pad(const Arguments &arguments)
{
    constexpr int64_t kLongest = 1 << 20;
    const auto length = arguments.number("length", 0, kLongest);
    if (!length)
        throw UsageError("--length is missing");
    NSString *fill = textOf(arguments.value("fill").value_or(" "));
    for (const std::string &word : arguments.rest(1)) {
        writeOutput(utf8Of([textOf(word) stringBySetLength:uint32_t(*length) withFillString:fill]) + "\n");
    }
    return kSuccess;
}

const Registration registration({
    .name = "text",
    .summary = "cut, convert and change text",
    .details = "Texts are UTF-8. FILE is standard input when it is missing or '-'.",
    .subcommands =
        {{.name = "lines",
          .summary = "lines with any ends (CR LF, CR, LF), each ended by LF",
          .usage = "[OPTION]... [FILE]",
          .details = "Example:\n  printf 'a\\r\\nb\\rc\\n' | tarvik text lines -n",
          .options = {{'n', "number", nullptr, "number them"},
                      {'c', "count", nullptr, "tell only how many pieces the line ends cut the text into"}},
          .run = inPool(lines)},
         {.name = "hex",
          .summary = "the bytes that hexadecimal digits spell",
          .usage = "DIGITS",
          .details = "An odd last digit is ignored.\n\nExample:\n  tarvik text hex 54657874 | od -c",
          .run = inPool(hex)},
         {.name = "ostype",
          .summary = "four-character codes, as number and as text",
          .usage = "TEXT|0xDIGITS...",
          .details = "Example:\n  tarvik text ostype TEXT 0x6170706C",
          .run = inPool(ostype)},
         {.name = "int",
          .summary = "the first number in each text (0 without one; signs are not read)",
          .usage = "TEXT...",
          .details = "Example:\n  tarvik text int \"page 12 of 40\"",
          .run = inPool(number)},
         {.name = "replace",
          .summary = "a text with every occurrence of FIND replaced, from the end",
          .usage = "[OPTION]... FIND WITH [FILE]",
          .details = "Example:\n  tarvik text replace colour color essay.txt",
          .options = {{'c', "count", nullptr, "tell only how many there are"}},
          .run = inPool(replace)},
         {.name = "pad",
          .summary = "texts cut or filled up to a length",
          .usage = "--length=UNITS [OPTION]... TEXT...",
          .details =
              "Lengths count UTF-16 units.\n\nExample:\n  tarvik text pad --length=8 --fill=.- Contents",
          .options = {{'l', "length", "UNITS", "the length"},
                      {'f', "fill", "TEXT", "what to fill up with (a blank)"}},
          .run = inPool(pad)}},
});

}  // namespace
