#include <Tarvik/system/ShellCommand.h>

#include <Tarvik/support/CFOwned.h>
#include <Tarvik/support/Owned.h>
#include <Tarvik/text/CStringConversion.h>

#include <cstdlib>

int CFString_system(CFStringRef command)
{
    if (!command)
        return -1;
    tarvik::Owned<char, std::free> text(CFStringAllocCString(command, kCFStringEncodingUTF8));
    if (!text)
        text.reset(CFStringAllocConvertableCString(command));
    return text ? std::system(text.get()) : -1;
}

int CFStringApplySystemCommand(CFStringRef command, CFStringRef prefix, CFStringRef suffix)
{
    if (!command)
        return -1;
    const tarvik::CFOwned<CFMutableStringRef> line(
        CFStringCreateMutableCopy(kCFAllocatorDefault, 0, command));
    if (!line)
        return -1;
    if (prefix) {
        CFStringInsert(line.get(), 0, CFSTR(" "));
        CFStringInsert(line.get(), 0, prefix);
    }
    if (suffix) {
        CFStringAppend(line.get(), CFSTR(" "));
        CFStringAppend(line.get(), suffix);
    }
    return CFString_system(line.get());
}
