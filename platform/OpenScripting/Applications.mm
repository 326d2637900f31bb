#include "private/Applications.h"

#include "platform/Aliases/private/ReferencePath.h"
#include "platform/LaunchServices/private/FolderInformation.h"
#include "platform/Processes/private/Processes.h"

#include <Carbon/LSOpen.h>
#import <Foundation/Foundation.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/CFOwned.h>
#import <Tarvik/support/Pool.h>

#include <algorithm>
#include <strings.h>

namespace tarvik::osa::applications {

namespace {

constexpr char kSuffix[] = ".app";

bool same(const std::string &one, const std::string &other)
{
    return !strcasecmp(one.c_str(), other.c_str());
}

/// The folder X.app, else the executable; empty when it is gone.
std::string placeOf(const ProcessSerialNumber &number)
{
    FSRef location;
    std::string path;
    return GetProcessBundleLocation(&number, &location) == noErr && aliases::pathOf(&location, path) == noErr
               ? path
               : "";
}

std::string withoutSuffix(std::string name)
{
    if (name.size() > 4 && same(name.substr(name.size() - 4), kSuffix))
        name.resize(name.size() - 4);
    return name;
}

/// The first of these texts that the application's folder has.
std::optional<std::string> said(const ProcessSerialNumber &number, std::initializer_list<NSString *> keys)
{
    const Pool pool;
    const std::string place = placeOf(number);
    if (!place.ends_with(kSuffix))
        return std::nullopt;
    NSDictionary *const information = launch::information(place);
    for (NSString *key : keys)
        if (const std::string text = launch::textOf(information, key); !text.empty())
            return text;
    return std::nullopt;
}

CFOwned<CFStringRef> string(const std::string &text)
{
    return CFOwned<CFStringRef>(CFStringCreateWithCString(nullptr, text.c_str(), kCFStringEncodingUTF8));
}

CFOwned<CFURLRef> fileURL(const std::string &path)
{
    return CFOwned<CFURLRef>(
        CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8 *>(path.data()),
                                                CFIndex(path.size()), path.ends_with(kSuffix)));
}

OSStatus openWith(CFURLRef application, LSLaunchFlags flags, const std::vector<std::string> &documents)
{
    NSMutableArray *const items = [NSMutableArray array];
    for (const std::string &path : documents)
        if (const auto url = fileURL(path))
            [items addObject:(NSURL *)url.get()];
    const LSLaunchURLSpec spec = {application, (CFArrayRef)items, nullptr, flags, nullptr};
    return LSOpenFromURLSpec(&spec, nullptr);
}

/// A child that a program is about to execute another program in still executes the parent's: it is no
/// application of that name.
void dropChildren(std::vector<ProcessSerialNumber> &numbers)
{
    std::vector<uint64_t> serials;
    for (const ProcessSerialNumber &number : numbers)
        if (const auto process = processes::processOf(number))
            serials.push_back(process->serial());
    std::erase_if(numbers, [&](const ProcessSerialNumber &number) {
        const auto process = processes::processOf(number);
        const auto parent = process ? processes::parentOf(*process) : std::nullopt;
        return parent && std::find(serials.begin(), serials.end(), parent->serial()) != serials.end();
    });
}

}  // namespace

std::vector<ProcessSerialNumber> running(const std::string &name)
{
    const Pool pool;
    std::vector<ProcessSerialNumber> found;
    ProcessSerialNumber number;
    if (name.empty()) {
        GetCurrentProcess(&number);
        return {number};
    }
    const bool isPath = name.starts_with('/'), mayBeIdentifier = name.find('.') != name.npos;
    const std::string plain = withoutSuffix(name);
    const auto matches = [&] {
        if (isPath)
            return withoutSuffix(placeOf(number)) == plain;
        if (const auto known = nameOf(number); known && (same(*known, name) || same(*known, plain)))
            return true;
        const std::string place = placeOf(number);
        if (!place.ends_with(kSuffix))
            return false;
        return same(withoutSuffix(place.substr(place.rfind('/') + 1)), plain) ||
               (mayBeIdentifier && same(identifierOf(number).value_or(""), name));
    };
    number = {0, kNoProcess};
    while (GetNextProcess(&number) == noErr)
        if (matches())
            found.push_back(number);
    dropChildren(found);
    // A program that tells itself by its name means itself, whoever else has that name.
    std::reverse(found.begin(), found.end());
    const ProcessSerialNumber current = {0, kCurrentProcess};
    std::stable_partition(found.begin(), found.end(), [&](const ProcessSerialNumber &one) {
        Boolean isCurrent = false;
        return SameProcess(&one, &current, &isCurrent) == noErr && isCurrent;
    });
    return found;
}

std::optional<std::string> nameOf(const ProcessSerialNumber &number)
{
    CFStringRef text = nullptr;
    if (CopyProcessName(&number, &text) != noErr)
        return std::nullopt;
    const CFOwned<CFStringRef> name(text);
    return utf8((NSString *)name.get());
}

std::optional<std::string> versionOf(const ProcessSerialNumber &number)
{
    return said(number, {@"CFBundleShortVersionString", @"ApplicationRelease", @"CFBundleVersion"});
}

std::optional<std::string> identifierOf(const ProcessSerialNumber &number)
{
    return said(number, {@"CFBundleIdentifier"});
}

bool isFrontmost(const ProcessSerialNumber &number)
{
    ProcessSerialNumber front;
    Boolean same = false;
    return GetFrontProcess(&front) == noErr && SameProcess(&number, &front, &same) == noErr && same;
}

OSStatus launch(const std::string &name, bool inFront, const std::vector<std::string> &documents)
{
    const Pool pool;
    CFURLRef found = nullptr;
    if (name.starts_with('/')) {
        found = fileURL(name).release();
    } else {
        const auto text = string(name);
        if (const OSStatus error = LSFindApplicationForInfo(
                kLSUnknownCreator, name.find('.') != name.npos ? text.get() : nullptr, text.get(), nullptr,
                &found))
            return error;
    }
    const CFOwned<CFURLRef> application(found);
    return openWith(application.get(), kLSLaunchDefaults | (inFront ? 0 : kLSLaunchDontSwitch), documents);
}

OSStatus open(const ProcessSerialNumber &number, const std::vector<std::string> &documents)
{
    const Pool pool;
    const std::string place = placeOf(number);
    if (!place.ends_with(kSuffix))
        return kLSNotAnApplicationErr;
    return openWith(fileURL(place).get(), kLSLaunchDefaults, documents);
}

}  // namespace tarvik::osa::applications
