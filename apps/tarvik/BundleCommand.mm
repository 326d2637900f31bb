#include "ObjectiveC.h"
#include "PropertyLists.h"
#include "Streams.h"

#import <Foundation/Foundation.h>
#import <Tarvik/Tarvik.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/CFOwned.h>

namespace {

using OwnedBundle = tarvik::CFOwned<CFBundleRef>;

OwnedBundle open(const std::string &path)
{
    OwnedBundle bundle(CFBundleCreateFromPOSIXPath((CFStringRef)textOf(path)));
    if (!bundle)
        throw Failure(path + ": is no bundle (there is no folder of that name)");
    return bundle;
}

void line(const char *label, CFURLRef owned)
{
    const tarvik::CFOwned<CFURLRef> url(owned);
    NSString *path =
        url ? [(NSString *)CFURLCopyFileSystemPath(url.get(), kCFURLPOSIXPathStyle) autorelease] : nil;
    writeOutput(label + (path ? utf8Of(path) : "none") + "\n");
}

int info(const Arguments &arguments)
{
    const std::string &path = arguments.rest(1, 1)[0];
    const OwnedBundle bundle = open(path);
    NSBundle *object = (NSBundle *)bundle.get();
    writeOutput("name:        " + utf8Of([object identifiedName]) + "\n");
    writeOutput("identifier:  " + ([object bundleIdentifier] ? utf8Of([object bundleIdentifier]) : "none") +
                "\n");
    line("folder:      ", CFBundleCopyDirectoryURL(bundle.get()));
    line("executable:  ", CFBundleCopyExecutableURL(bundle.get()));
    line("resources:   ",
         CFBundleCopyResourcesDirectoryURLAppendingPathComponent(bundle.get(), nullptr, true));
    const tarvik::CFOwned<CFArrayRef> languages(CFBundleCopyBundleLocalizations(bundle.get()));
    NSString *names = [(NSArray *)languages.get() componentsJoinedByString:@" "];
    writeOutput("languages:   " + ([names length] > 0 ? utf8Of(names) : "none") + "\n");
    return kSuccess;
}

int strings(const Arguments &arguments)
{
    const auto &words = arguments.rest(1, 2);
    const OwnedBundle bundle = open(words[0]);
    const std::string table = arguments.value("table").value_or("Localizable");
    const std::string language = arguments.value("language").value_or("en");
    const auto name = [&](const std::string &given) { return (CFStringRef)textOf(given); };
    const tarvik::CFOwned<CFDictionaryRef> all(
        CFBundleCopyStringsDictionaryForLocalization(bundle.get(), name(table), name(language)));
    if (!all)
        throw Failure(words[0] + ": has no readable table '" + table + "' for '" + language +
                      "' ('tarvik bundle info' lists the languages)");
    if (words.size() == 1) {
        writeOutput(showList((id)all.get()));
        return kSuccess;
    }
    const auto fallback = arguments.value("default");
    const tarvik::CFOwned<CFStringRef> found(CFBundleCopyStringForLocalization(
        bundle.get(), name(words[1]), fallback ? name(*fallback) : nullptr, name(table), name(language)));
    writeOutput(utf8Of((NSString *)found.get()) + "\n");
    return kSuccess;
}

int resources(const Arguments &arguments)
{
    const auto &words = arguments.rest(1, 2);
    const OwnedBundle bundle = open(words[0]);
    const tarvik::CFOwned<CFArrayRef> urls(CFBundleCopyResourceURLsOfType(
        bundle.get(), words.size() > 1 ? (CFStringRef)textOf(words[1]) : nullptr, nullptr));
    for (NSURL *url : tarvik::each<NSURL>((NSArray *)urls.get()))
        writeOutput(utf8Of([url path]) + "\n");
    return kSuccess;
}

const Registration registration({
    .name = "bundle",
    .summary = "what a bundle holds: its places, its texts, its resources",
    .details = "A bundle is a folder in the layout of GNUstep (X.app/Resources), of Mac applications "
               "(X.app/Contents), or flat.",
    .subcommands = {{.name = "info",
                     .summary = "name, identifier and places of a bundle",
                     .usage = "BUNDLE",
                     .run = inPool(info)},
                    {.name = "strings",
                     .summary = "the texts of a strings table, or the one of a key",
                     .usage = "[OPTION]... BUNDLE [KEY]",
                     .details =
                         "Example:\n  tarvik bundle strings --language=French --table=Common App.app hello",
                     .options = {{'l', "language", "NAME", "the localization: en, French, ... (en)"},
                                 {'t', "table", "NAME", "the table, without .strings (Localizable)"},
                                 {'d', "default", "TEXT", "what to print for a key that is missing"}},
                     .run = inPool(strings)},
                    {.name = "resources",
                     .summary = "the paths of its resources, of one type when given (an extension)",
                     .usage = "BUNDLE [TYPE]",
                     .run = inPool(resources)}},
});

}  // namespace
