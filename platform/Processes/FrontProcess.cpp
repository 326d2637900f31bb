#include "platform/Processes/private/Processes.h"
#include "platform/Processes/private/WindowManager.h"

#include <new>

using namespace tarvik::processes;

OSErr GetFrontProcess(ProcessSerialNumber *pPSN)
try {
    if (!pPSN)
        return paramErr;
    *pPSN = {0, kNoProcess};
    const auto manager = WindowManager::connect();
    return manager ? OSErr(GetProcessForPID(manager->frontProcess(), pPSN)) : OSErr(procNotFound);
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr SetFrontProcess(const ProcessSerialNumber *pPSN)
try {
    if (!pPSN)
        return paramErr;
    const auto process = processOf(*pPSN);
    if (!process || !isAlive(*process))
        return procNotFound;
    const auto manager = WindowManager::connect();
    if (!manager)
        return connectionInvalid;
    return manager->bringToFront(process->pid) ? OSErr(noErr) : OSErr(appIsDaemon);
} catch (const std::bad_alloc &) {
    return memFullErr;
}
