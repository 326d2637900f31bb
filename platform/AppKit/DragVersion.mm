// Drags between programs. gnustep-back calls itself a speaker of the drag protocol's version 2, and programs of today take no drags from
// such a one and offer it none: they begin at 3. To a partner of version 2 or more it doesn't say when things happen, and from 3 on not
// even what is to be done with the data, as it compares versions the wrong way round.
//
// Here it speaks version 4, says everything to everybody, and understands what is said by then (XDND,
// www.freedesktop.org/wiki/Specifications/XDND). Its own functions find each other through the linker, which finds these first.
#import <Foundation/NSBundle.h>

#import <Tarvik/support/Pool.h>

#include <dlfcn.h>

#define INTERPOSED extern "C" __attribute__((visibility("default")))

namespace {

constexpr unsigned long kClaimed = 2, kSpoken = 4;
constexpr int kTold = 1;  // what it takes for a version below 2 is told all

/// gnustep-back's state of the protocol, as far as it is of interest.
struct DragProtocol {
    void *display;
    unsigned long atoms[17];
    unsigned long version;
};

template <class Function>
Function original(const char *name)
{
    tarvik::Pool pool;
    NSString *path = [[NSBundle bundleForClass:NSClassFromString(@"XGServer")] executablePath];
    void *library = path ? dlopen([path fileSystemRepresentation], RTLD_LAZY | RTLD_NOLOAD) : nullptr;
    return library ? reinterpret_cast<Function>(dlsym(library, name)) : nullptr;
}

}  // namespace

INTERPOSED void xdnd_init(DragProtocol *protocol, void *display)
{
    static const auto initialize = original<decltype(&xdnd_init)>("xdnd_init");
    if (!initialize)
        return;
    initialize(protocol, display);
    if (protocol->display == display && protocol->version == kClaimed)
        protocol->version = kSpoken;
}

INTERPOSED int xdnd_is_dnd_aware(DragProtocol *protocol, unsigned long window, int *version,
                                 unsigned long *types)
{
    static const auto isAware = original<decltype(&xdnd_is_dnd_aware)>("xdnd_is_dnd_aware");
    const int is = isAware ? isAware(protocol, window, version, types) : 0;
    if (is && protocol->version == kSpoken && *version > kTold)
        *version = kTold;
    return is;
}
