#include "ObjectiveC.h"
#include "PropertyLists.h"
#include "Streams.h"

#import <Foundation/Foundation.h>
#include <Tarvik/Tarvik.h>

#include <CoreFoundation/CFURLAccess.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace {

/// What a path of keys and array indexes leads to. Throws Failure with the key that leads nowhere.
id follow(id list, const std::vector<std::string> &words, size_t first)
{
    for (size_t i = first; i < words.size(); ++i) {
        const CFTypeID type = CFGetTypeID(list);
        id next = nil;
        if (type == CFDictionaryGetTypeID()) {
            next = [list objectForKeys:textOf(words[i]), nil];
        } else if (type == CFArrayGetTypeID()) {
            char *end = nullptr;
            const unsigned long index = std::strtoul(words[i].c_str(), &end, 10);
            next = *end || words[i].empty() || index >= [list count] ? nil : [list objectAtIndex:index];
        }
        if (!next)
            throw Failure("'" + words[i] + "': nothing stands there (" +
                          (type == CFDictionaryGetTypeID() ? "no such key"
                           : type == CFArrayGetTypeID()    ? "the array holds " + std::to_string([list count])
                                                           : "the path goes on below a value") +
                          ")");
        list = next;
    }
    return list;
}

void print(const Arguments &arguments, id list)
{
    writeOutput(arguments.has("xml") ? xmlOfList(list) : showList(list));
}

int show(const Arguments &arguments)
{
    const auto &words = arguments.rest(0, 1);
    print(arguments, readList(words.empty() ? "-" : words[0]));
    return kSuccess;
}

int get(const Arguments &arguments)
{
    const auto &words = arguments.rest(2);
    print(arguments, follow(readList(words[0]), words, 1));
    return kSuccess;
}

std::string inForm(id list, const std::string &form)
{
    if (form == "xml")
        return xmlOfList(list);
    if (form != "text")
        throw UsageError("--form=" + form + ": xml or text");
    NSString *why = nil;
    NSData *data = [NSPropertyListSerialization dataFromPropertyList:list
                                                              format:NSPropertyListOpenStepFormat
                                                    errorDescription:&why];
    if (!data)
        throw Failure("can't be written as text: " + utf8Of(why));
    return std::string(static_cast<const char *>([data bytes]), [data length]);
}

int convert(const Arguments &arguments)
{
    const auto &words = arguments.rest(0, 2);
    const std::string text =
        inForm(readList(words.empty() ? "-" : words[0]), arguments.value("form").value_or("xml"));
    if (words.size() < 2 || words[1] == "-") {
        writeOutput(text);
        return kSuccess;
    }
    CFURLRef url = CFURLCreateFromFileSystemRepresentation(
        nullptr, reinterpret_cast<const UInt8 *>(words[1].data()), CFIndex(words[1].size()), false);
    CFDataRef data =
        CFDataCreate(nullptr, reinterpret_cast<const UInt8 *>(text.data()), CFIndex(text.size()));
    const bool written = url && CFURLWriteDataAndPropertiesToResource(url, data, nullptr, nullptr);
    const int why = errno;
    CFRelease(data);
    CFRelease(url);
    if (!written)
        throw systemFailure(words[1] + ": can't be written", why);
    return kSuccess;
}

int check(const Arguments &arguments)
{
    int status = kSuccess;
    for (const std::string &path : arguments.rest(1)) {
        try {
            CFStringRef type = CFCopyTypeIDDescription(CFGetTypeID(readList(path)));
            if (!arguments.has("quiet"))
                std::printf("%s: ok (%s)\n", path.c_str(), utf8Of((NSString *)type).substr(2).c_str());
            CFRelease(type);
        } catch (const Failure &failure) {
            std::fprintf(stderr, "tarvik plist check: %s\n", failure.what());
            status = kFailure;
        }
    }
    return status;
}

const Option kXML = {'x', "xml", nullptr, "print XML instead of a tree"};

const Registration registration({
    .name = "plist",
    .summary = "property lists: show, get by key path, convert, check",
    .details = "A list is XML, or the older text form: {key = (1, \"two\");}, or a strings table (\"key\" = "
               "\"value\";).\n"
               "FILE '-', or none, is standard input.\n\n"
               "Examples:\n"
               "  tarvik plist show Info.plist\n"
               "  tarvik plist get report.plist images 0 image-path\n"
               "  tarvik plist convert --form=text Info.plist Info-gnustep.plist",
    .subcommands =
        {{.name = "show",
          .summary = "print a list as a tree",
          .usage = "[OPTION]... [FILE]",
          .options = {kXML},
          .run = inPool(show)},
         {.name = "get",
          .summary = "print what stands at a path of keys and array indexes",
          .usage = "[OPTION]... FILE KEY...",
          .details = "A text is printed as it is; a dictionary or an array as a tree. Exit status 1 when "
                     "nothing stands there.",
          .options = {kXML},
          .run = inPool(get)},
         {.name = "convert",
          .summary = "write a list in another form",
          .usage = "[OPTION]... [FILE [RESULT]]",
          .details =
              "RESULT is replaced whole, or left as it was. Without one the list goes to standard output.",
          .options = {{'f', "form", "FORM", "xml (the default) or text"}},
          .run = inPool(convert)},
         {.name = "check",
          .summary = "say of each file whether it is a property list",
          .usage = "[OPTION]... FILE...",
          .options = {{'q', "quiet", nullptr, "say nothing of those that are"}},
          .run = inPool(check)}},
});

}  // namespace
