#include "platform/AppleEvents/private/Addresses.h"

#include "platform/AppleEvents/private/StationFolder.h"

#include <Carbon/Processes.h>

#include <cstring>
#include <unistd.h>

namespace tarvik::ae {

namespace {

template <class Value>
bool readValue(const AEDesc &desc, Value &value)
{
    const std::string_view bytes = bytesOf(&desc);
    if (bytes.size() != sizeof value)
        return false;
    std::memcpy(&value, bytes.data(), sizeof value);
    return true;
}

OSErr process(pid_t pid, Address &address)
{
    if (pid <= 0)
        return procNotFound;
    address.isSelf = pid == getpid();
    address.pids = {pid};
    return noErr;
}

OSErr processNumber(const ProcessSerialNumber &number, Address &address)
{
    if (number.highLongOfPSN == 0 && number.lowLongOfPSN == kCurrentProcess)
        return process(getpid(), address);
    address.isSystem = number.highLongOfPSN == 0 && number.lowLongOfPSN == kSystemProcess;
    if (address.isSystem)
        return noErr;
    pid_t pid = 0;
    const OSErr error = GetProcessPID(&number, &pid);
    return error ? OSErr(procNotFound) : process(pid, address);
}

OSErr application(OSType signature, const std::string &bundleIdentifier, Address &address)
{
    const Identity &own = ownIdentity();
    address.isSelf = bundleIdentifier.empty() ? signature != 0 && own.signature == signature
                                              : own.bundleIdentifier == bundleIdentifier;
    if (address.isSelf)
        return noErr;
    const StationFolder folder;
    if (folder)
        address.pids = folder.find(signature, bundleIdentifier);
    return address.pids.empty() ? OSErr(procNotFound) : OSErr(noErr);
}

/// The processes whose item is the one at a file URL.
OSErr applicationAt(const AEDesc &url, Address &address)
{
    OwnedDesc coerced;
    FSRef wanted, location;
    if (AECoerceDesc(&url, typeFSRef, coerced.out()) != noErr || !readValue(*coerced.get(), wanted))
        return procNotFound;
    ProcessSerialNumber number = {0, kNoProcess};
    pid_t pid = 0;
    while (GetNextProcess(&number) == noErr)
        if (GetProcessBundleLocation(&number, &location) == noErr &&
            FSCompareFSRefs(&location, &wanted) == noErr && GetProcessPID(&number, &pid) == noErr) {
            address.isSelf |= pid == getpid();
            address.pids.push_back(pid);
        }
    return address.pids.empty() ? OSErr(procNotFound) : OSErr(noErr);
}

bool isLocalFileURL(std::string_view url)
{
    return url.starts_with("file:///") || url.starts_with("file://localhost/");
}

}  // namespace

OSErr resolve(const Event &event, Address &address)
{
    const Item *item = find(event.attributes, keyAddressAttr);
    if (!item || item->desc->descriptorType == typeNull)
        return process(getpid(), address);
    const AEDesc &target = *item->desc.get();
    switch (target.descriptorType) {
    case typeProcessSerialNumber: {
        ProcessSerialNumber number;
        return readValue(target, number) ? processNumber(number, address) : OSErr(errAECorruptData);
    }
    case typeKernelProcessID: {
        SInt32 pid;
        return readValue(target, pid) ? process(pid, address) : OSErr(errAECorruptData);
    }
    case typeApplSignature: {
        OSType signature;
        return readValue(target, signature) ? application(signature, {}, address) : OSErr(errAECorruptData);
    }
    case typeApplicationBundleID: {
        const std::string_view identifier = bytesOf(&target);
        return identifier.empty() ? OSErr(errAECorruptData)
                                  : application(0, std::string(identifier), address);
    }
    case typeApplicationURL:
        return isLocalFileURL(bytesOf(&target)) ? applicationAt(target, address)
                                                : OSErr(errAEUnknownAddressType);
    default: return errAEUnknownAddressType;
    }
}

}  // namespace tarvik::ae
