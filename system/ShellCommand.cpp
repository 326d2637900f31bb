#include <Tarvik/system/ShellCommand.h>
#include <Tarvik/text/CStringConversion.h>

#include <cstdlib>
#include <memory>
#include <type_traits>

namespace {

struct Freed {
    void operator()(void *memory) const { std::free(memory); }
};
struct Released {
    void operator()(CFTypeRef object) const { CFRelease(object); }
};
using MutableString = std::unique_ptr<std::remove_pointer_t<CFMutableStringRef>, Released>;

}  // namespace

int CFString_system(CFStringRef command)
{
    if (!command)
        return -1;
    std::unique_ptr<char, Freed> text(CFStringAllocCString(command, kCFStringEncodingUTF8));
    if (!text)
        text.reset(CFStringAllocConvertableCString(command));
    return text ? std::system(text.get()) : -1;
}

int CFStringApplySystemCommand(CFStringRef command, CFStringRef prefix, CFStringRef suffix)
{
    if (!command)
        return -1;
    const MutableString line(CFStringCreateMutableCopy(kCFAllocatorDefault, 0, command));
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
