#include <Tarvik/system/Processes.h>

namespace {

Boolean isURL(CFURLRef url) { return url && CFGetTypeID(url) == CFURLGetTypeID(); }

CFStringRef copyName(OSErr (*find)(ProcessSerialNumber *))
{
    ProcessSerialNumber number;
    CFStringRef name = nullptr;
    if (find(&number) != noErr)
        return nullptr;
    if (CopyProcessName(&number, &name) != noErr) {
        if (name)
            CFRelease(name);
        return nullptr;
    }
    return name;
}

Boolean getLocation(OSErr (*find)(ProcessSerialNumber *), FSRef *ref)
{
    ProcessSerialNumber number;
    return ref && find(&number) == noErr && GetProcessBundleLocation(&number, ref) == noErr;
}

}  // namespace

Boolean EnumerateAllProcess(EnumerateAllProcessCallback callback, void *context)
{
    if (!callback)
        return false;
    ProcessSerialNumber number = {0, kNoProcess};
    OSErr error;
    while ((error = GetNextProcess(&number)) == noErr)
        if (!callback(&number, context))
            return false;
    return error == procNotFound;
}

Boolean FSGetCurrentProcess(FSRef *ref) { return getLocation(GetCurrentProcess, ref); }
Boolean FSGetFrontProcess(FSRef *ref) { return getLocation(GetFrontProcess, ref); }

CFURLRef CFURLCopyCurrentProcess(void)
{
    FSRef ref;
    return FSGetCurrentProcess(&ref) ? CFURLCreateFromFSRef(nullptr, &ref) : nullptr;
}

CFStringRef CFStringCopyCurrentProcessName(void) { return copyName(GetCurrentProcess); }
CFStringRef CFStringCopyFrontProcessName(void) { return copyName(GetFrontProcess); }

Boolean FSCopyAllProcessEnumeration(const ProcessSerialNumber *number, void *context)
{
    FSRef ref;
    if (GetProcessBundleLocation(number, &ref) == noErr)
        CFDataAppendBytes(static_cast<CFMutableDataRef>(context), ref.hidden, sizeof ref.hidden);
    return true;
}

CFMutableDataRef FSCopyAllProcess(void)
{
    CFMutableDataRef list = CFDataCreateMutable(nullptr, 0);
    if (list && !EnumerateAllProcess(FSCopyAllProcessEnumeration, list)) {
        CFRelease(list);
        return nullptr;
    }
    return list;
}

Boolean FSGetProcessSerialNumberEnumeration(const ProcessSerialNumber *number, void *context)
{
    auto *const sought = static_cast<ProcessEnumerationContext *>(context);
    FSRef ref;
    if (GetProcessBundleLocation(number, &ref) == noErr && FSCompareFSRefs(&ref, sought->ref) == noErr) {
        *sought->number = *number;
        sought->found = true;
    }
    return !sought->found;
}

Boolean FSGetProcessSerialNumber(const FSRef *ref, ProcessSerialNumber *number)
{
    if (!number)
        return false;
    *number = {0, kNoProcess};
    if (!ref)
        return false;
    ProcessEnumerationContext sought = {ref, false, number};
    EnumerateAllProcess(FSGetProcessSerialNumberEnumeration, &sought);
    return sought.found != 0;
}

Boolean CFURLGetProcessSerialNumber(CFURLRef url, ProcessSerialNumber *number)
{
    FSRef ref;
    return FSGetProcessSerialNumber(isURL(url) && CFURLGetFSRef(url, &ref) ? &ref : nullptr, number);
}

Boolean FSIsRunningProcess(const FSRef *ref)
{
    ProcessSerialNumber number;
    return FSGetProcessSerialNumber(ref, &number);
}

Boolean CFURLIsRunningProcess(CFURLRef url)
{
    ProcessSerialNumber number;
    return CFURLGetProcessSerialNumber(url, &number);
}

Boolean FSIsFrontProcess(const FSRef *ref)
{
    FSRef front;
    return ref && FSGetFrontProcess(&front) && FSCompareFSRefs(ref, &front) == noErr;
}

Boolean ProcessActivate(void)
{
    ProcessSerialNumber number;
    return GetCurrentProcess(&number) == noErr && SetFrontProcess(&number) == noErr;
}

Boolean FSSetFrontProcess(const FSRef *ref)
{
    ProcessSerialNumber number;
    return FSGetProcessSerialNumber(ref, &number) && SetFrontProcess(&number) == noErr;
}

Boolean LSLaunchURLWithLaunchFlags(CFURLRef url, LSLaunchFlags flags)
{
    if (!isURL(url))
        return false;
    const LSLaunchURLSpec spec = {.appURL = url,
                                  .itemURLs = nullptr,
                                  .passThruParams = nullptr,
                                  .launchFlags = flags,
                                  .asyncRefCon = nullptr};
    return LSOpenFromURLSpec(&spec, nullptr) == noErr;
}
