#include "platform/Processes/private/Processes.h"

using namespace tarvik::processes;

OSErr GetCurrentProcess(ProcessSerialNumber *pPSN)
{
    if (!pPSN)
        return paramErr;
    *pPSN = current().number();
    return noErr;
}

OSErr SameProcess(const ProcessSerialNumber *pPSN1, const ProcessSerialNumber *pPSN2, Boolean *pResult)
{
    if (!pPSN1 || !pPSN2 || !pResult)
        return paramErr;
    const auto first = processOf(*pPSN1), second = processOf(*pPSN2);
    *pResult = first && second && first->serial() == second->serial();
    return first && second ? OSErr(noErr) : OSErr(procNotFound);
}

OSStatus GetProcessPID(const ProcessSerialNumber *psn, pid_t *pid)
{
    if (!psn || !pid)
        return paramErr;
    *pid = 0;
    const auto process = processOf(*psn);
    if (!process || !isAlive(*process))
        return procNotFound;
    *pid = process->pid;
    return noErr;
}

OSStatus GetProcessForPID(pid_t pid, ProcessSerialNumber *psn)
{
    if (!psn)
        return paramErr;
    *psn = {0, kNoProcess};
    const auto process = processWithID(pid);
    if (!process || !look(*process))
        return procNotFound;
    *psn = process->number();
    return noErr;
}
