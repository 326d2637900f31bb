#include "ObjectiveC.h"
#include "Streams.h"

#include <CoreFoundation/CFString.h>
#import <Foundation/Foundation.h>
#include <Tarvik/Tarvik.h>
#import <Tarvik/support/Bridge.h>

#include <cstdio>
#include <cstdlib>

namespace {

std::string nameOf(CFStringEncoding encoding)
{
    return utf8Of((NSString *)CFStringConvertEncodingToIANACharSetName(encoding));
}

CFStringEncoding encodingNamed(const std::string &name)
{
    const CFStringEncoding encoding = CFStringConvertIANACharSetNameToEncoding((CFStringRef)textOf(name));
    if (encoding == kCFStringEncodingInvalidId || !CFStringIsEncodingAvailable(encoding))
        throw UsageError("no encoding '" + name + "'; 'tarvik encode --list' lists them");
    return encoding;
}

int list()
{
    for (const CFStringEncoding *encoding = CFStringGetListOfAvailableEncodings();
         *encoding != kCFStringEncodingInvalidId; ++encoding)
        std::printf("0x%08X  %-18s %s\n", *encoding, nameOf(*encoding).c_str(),
                    utf8Of((NSString *)CFStringGetNameOfEncoding(*encoding)).c_str());
    return kSuccess;
}

int encode(const Arguments &arguments)
{
    arguments.rest(0, 1);
    if (arguments.has("list"))
        return list();
    const CFStringEncoding from = encodingNamed(arguments.value("from").value_or("utf-8"));
    Input file(arguments.rest().empty() ? "-" : arguments.rest()[0]);
    NSData *bytes = tarvik::nsdata(file.readAll());
    CFStringRef text = CFStringCreateFromExternalRepresentation(kCFAllocatorDefault, (CFDataRef)bytes, from);
    if (!text)
        throw Failure(file.name() + ": is not text in " + nameOf(from) + " (name its encoding with --from)");
    [(NSString *)text autorelease];
    const auto target = arguments.value("to");
    CFDataRef out =
        target ? CFStringCreateExternalRepresentation(kCFAllocatorDefault, text, encodingNamed(*target),
                                                      arguments.has("lossy") ? '?' : 0)
               : CFStringCreateConvertableExternalRepresentation(text);
    if (!out)
        throw Failure(file.name() + ": has characters that " + *target +
                      " lacks (--lossy writes '?' for them)");
    writeOutput(tarvik::bytes([(NSData *)out autorelease]).value_or(""));
    return kSuccess;
}

const Registration registration({
    .name = "encode",
    .summary = "convert text between encodings",
    .usage = "[OPTION]... [FILE]",
    .details = "FILE is standard input when it is missing or '-'. Without --to the text is written in the "
               "system's encoding, or in\n"
               "the first available one that holds it. Encodings go by their registered names.\n\n"
               "Example:\n  tarvik encode --from=macintosh --to=utf-8 readme.txt",
    .options = {{'f', "from", "NAME", "the encoding of the text (utf-8)"},
                {'t', "to", "NAME", "the encoding to write"},
                {'l', "lossy", nullptr, "write '?' for characters that it lacks"},
                {'L', "list", nullptr, "list the available encodings"}},
    .run = inPool(encode),
});

}  // namespace
