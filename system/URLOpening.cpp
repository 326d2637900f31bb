#include <Tarvik/system/URLOpening.h>

Boolean CFURLOpenWithLSLaunchFlags(CFURLRef url, LSLaunchFlags flags)
{
    if (!url || CFGetTypeID(url) != CFURLGetTypeID())
        return false;
    const void *items[] = {url};
    CFArrayRef list = CFArrayCreate(nullptr, items, 1, &kCFTypeArrayCallBacks);
    const LSLaunchURLSpec spec = {.appURL = nullptr,
                                  .itemURLs = list,
                                  .passThruParams = nullptr,
                                  .launchFlags = flags,
                                  .asyncRefCon = nullptr};
    const OSStatus error = LSOpenFromURLSpec(&spec, nullptr);
    CFRelease(list);
    return error == noErr;
}
