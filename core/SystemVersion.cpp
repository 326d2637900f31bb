#include <Carbon/Gestalt.h>
#include <Tarvik/core/SystemVersion.h>

#include <atomic>

uint32_t GestaltSystemVersion()
{
    static std::atomic<uint32_t> cached{0};
    if (uint32_t known = cached)
        return known;
    SInt32 version = 0;
    if (Gestalt(gestaltSystemVersion, &version) != noErr)
        return 0;
    return cached = uint32_t(version);
}
