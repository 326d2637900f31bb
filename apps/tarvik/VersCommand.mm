#include "FileItems.h"
#include "ObjectiveC.h"
#include "Streams.h"

#include <Carbon/Resources.h>
#import <Foundation/Foundation.h>
#import <Tarvik/Tarvik.h>
#import <Tarvik/support/CFOwned.h>

namespace {

std::string text(CFStringRef owned)
{
    const tarvik::CFOwned<CFStringRef> string(owned);
    return string ? utf8Of((NSString *)string.get()) : "(not of this encoding)";
}

int run(const Arguments &arguments)
{
    const std::string &path = arguments.rest(1, 1)[0];
    const auto number = SInt16(arguments.number("id", -32768, 32767).value_or(1));
    const FSRef ref = itemAt(path);
    ResFileRefNum file = -1;
    const OSStatus status = FSOpenResourceFile(&ref, 0, nullptr, 1, &file);
    if (status == mapReadErr)
        throw Failure(path + ": is no resource file");
    if (status != noErr)
        throw fileFailure(path, status);
    VersRec record;
    const bool found = RFGetVersion(number, &record);
    CloseResFile(file);
    if (!found)
        throw Failure(path + ": has no sound 'vers' resource " + std::to_string(number));
    writeOutput("version: " + text(VersRecCopyVersionString(&record, true)) + "\n");
    writeOutput("country: " + std::to_string(record.countryCode) + "\n");
    writeOutput("short:   " + text(VersRecCopyShortString(&record, kCFStringEncodingMacRoman)) + "\n");
    writeOutput("long:    " + text(VersRecCopyLongString(&record, kCFStringEncodingMacRoman)) + "\n");
    return kSuccess;
}

const Registration registration({
    .name = "vers",
    .summary = "the version record of a resource file",
    .usage = "[OPTION]... FILE",
    .details = "The file's data is in resource-fork format (a .rsrc file). Texts are read as MacRoman.",
    .options = {{'i', "id", "NUMBER",
                 "the number of the 'vers' resource (1: the file's own, 2: the product's)"}},
    .run = inPool(run),
});

}  // namespace
