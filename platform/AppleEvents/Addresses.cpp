#include "platform/AppleEvents/private/Addresses.h"

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
    address = {pid == getpid(), std::to_string(pid), pid};
    return noErr;
}

OSErr processNumber(const ProcessSerialNumber &number, Address &address)
{
    if (number.highLongOfPSN == 0 && number.lowLongOfPSN == kCurrentProcess)
        return process(getpid(), address);
    pid_t pid = 0;
    const OSErr error = GetProcessPID(&number, &pid);
    return error ? OSErr(procNotFound) : process(pid, address);
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
    default: return errAEUnknownAddressType;
    }
}

}  // namespace tarvik::ae
