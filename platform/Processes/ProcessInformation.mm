#include "platform/Aliases/private/ReferencePath.h"
#include "platform/CoreFoundation/private/Bridging.h"
#include "platform/LaunchServices/private/FolderInformation.h"
#include "platform/Processes/private/Processes.h"

#import <Foundation/Foundation.h>
#import <Tarvik/support/Bridge.h>

using namespace tarvik;
using namespace tarvik::processes;

namespace {

NSString *pathText(std::string_view path)
{
    return [[NSFileManager defaultManager] stringWithFileSystemRepresentation:path.data() length:path.size()];
}

std::string nameOf(const Running &running, NSDictionary *information)
{
    const Executable &executable = *running.executable;
    return executable.isInApplication() ? launch::nameOf(executable.item(), information)
                                        : std::string(executable.name());
}

/// What an application's folder says; nil for other processes.
NSDictionary *informationOf(const Running &running)
{
    return running.executable->isInApplication() && !running.isElsewhere
               ? launch::information(running.executable->item())
               : nil;
}

/// The process of a number, and what it executes.
OSStatus find(const ProcessSerialNumber *psn, std::optional<Running> &running)
{
    if (!psn)
        return paramErr;
    const auto process = processOf(*psn);
    running = process ? justMet(*process) : std::nullopt;
    if (process && !running)
        running = look(*process);
    return running ? OSStatus(noErr) : OSStatus(procNotFound);
}

NSNumber *numberOf(const Process &process) { return [NSNumber numberWithUnsignedLongLong:process.serial()]; }

}  // namespace

OSStatus GetProcessBundleLocation(const ProcessSerialNumber *psn, FSRef *location)
{
    if (!location)
        return paramErr;
    std::optional<Running> running;
    const OSStatus error = find(psn, running);
    return error ? error : locate(*running, location);
}

OSStatus CopyProcessName(const ProcessSerialNumber *psn, CFStringRef *name)
{
    if (!name)
        return paramErr;
    *name = nullptr;
    return cf::answer<OSStatus>(memFullErr, [&]() -> OSStatus {
        std::optional<Running> running;
        if (const OSStatus error = find(psn, running))
            return error;
        *name = cf::owned<CFStringRef>([&] { return pathText(nameOf(*running, informationOf(*running))); });
        return *name ? OSStatus(noErr) : OSStatus(memFullErr);
    });
}

CFDictionaryRef ProcessInformationCopyDictionary(const ProcessSerialNumber *psn, UInt32)
{
    return cf::owned<CFDictionaryRef>([&]() -> NSDictionary * {
        std::optional<Running> running;
        if (find(psn, running))
            return nil;
        NSMutableDictionary *about = [NSMutableDictionary dictionary];
        const auto set = [&](NSString *key, id value) {
            if (value)
                [about setObject:value forKey:key];
        };
        set(@"PSN", numberOf(running->process));
        set(@"pid", [NSNumber numberWithInt:running->process.pid]);
        if (const auto parent = parentOf(running->process))
            set(@"ParentPSN", numberOf(*parent));
        FSRef location;
        std::string path;
        if (locate(*running, &location) == noErr && aliases::pathOf(&location, path) == noErr)
            set(@"BundlePath", pathText(path));
        set(@"CFBundleExecutable", pathText(running->executable->link()));
        NSDictionary *const information = informationOf(*running);
        set(@"CFBundleName", pathText(nameOf(*running, information)));
        if (const std::string identifier = launch::textOf(information, @"CFBundleIdentifier");
            !identifier.empty())
            set(@"CFBundleIdentifier", nsstring(identifier));
        if (const OSType signature = running->executable->isInApplication() && !running->isElsewhere
                                         ? launch::signatureOf(running->executable->item(), information)
                                         : 0)
            set(@"FileCreator",
                [[[NSString alloc] initWithBytes:std::string{char(signature >> 24), char(signature >> 16),
                                                             char(signature >> 8), char(signature)}
                                                     .data()
                                          length:4
                                        encoding:NSMacOSRomanStringEncoding] autorelease]);
        return about;
    });
}
