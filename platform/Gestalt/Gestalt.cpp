#include <Carbon/Gestalt.h>

#include <map>
#include <mutex>

namespace {

// The calls that the platform floor gives are those of 10.6.8, the last system with all of them.
constexpr SInt32 kSystemVersion = 0x1068;

using Selectors = std::map<OSType, SelectorFunctionUPP>;

std::mutex gSelectorsLock;

Selectors &selectors()
{
    static Selectors all = {
        {gestaltSystemVersion,
         [](OSType, SInt32 *response) -> OSErr {
             *response = kSystemVersion;
             return noErr;
         }},
        {gestaltSysArchitecture,
         [](OSType, SInt32 *response) -> OSErr {
#if defined(__i386__) || defined(__x86_64__)
             *response = gestaltIntel;
#elif defined(__powerpc__)
             *response = gestaltPowerPC;
#elif defined(__m68k__)
             *response = gestalt68k;
#else
             return gestaltUnknownErr;
#endif
             return noErr;
         }},
    };
    return all;
}

}  // namespace

OSErr Gestalt(OSType selector, SInt32 *response)
{
    if (!response)
        return paramErr;
    SelectorFunctionUPP function = nullptr;
    {
        std::lock_guard lock(gSelectorsLock);
        if (auto found = selectors().find(selector); found != selectors().end())
            function = found->second;
    }
    return function ? function(selector, response) : OSErr(gestaltUndefSelectorErr);
}

OSErr NewGestalt(OSType selector, SelectorFunctionUPP function)
{
    if (!function)
        return paramErr;
    std::lock_guard lock(gSelectorsLock);
    return selectors().emplace(selector, function).second ? OSErr(noErr) : OSErr(gestaltDupSelectorErr);
}

OSErr ReplaceGestalt(OSType selector, SelectorFunctionUPP function, SelectorFunctionUPP *oldFunction)
{
    if (!function)
        return paramErr;
    std::lock_guard lock(gSelectorsLock);
    auto found = selectors().find(selector);
    if (found == selectors().end())
        return gestaltUndefSelectorErr;
    if (oldFunction)
        *oldFunction = found->second;
    found->second = function;
    return noErr;
}
