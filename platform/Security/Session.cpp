/// Start-up, modules and attachments.
#include "Context.h"

#include <cstring>

using cssm::Registry;

const CSSM_GUID gGuidAppleCSP = {
    0x87191ca2, 0x0fc9, 0x11d4, {0x84, 0x9a, 0x00, 0x05, 0x02, 0xb5, 0x21, 0x22}};

namespace {

bool isVersion2(const CSSM_VERSION &version) { return version.Major == 2 && version.Minor == 0; }

bool isStandardProvider(const CSSM_GUID &guid)
{
    return std::memcmp(&guid, &gGuidAppleCSP, sizeof guid) == 0;
}

bool isComplete(const CSSM_API_MEMORY_FUNCS &memory)
{
    return memory.malloc_func && memory.free_func && memory.realloc_func && memory.calloc_func;
}

constexpr CSSM_KEY_HIERARCHY kHierarchies = CSSM_KEY_HIERARCHY_INTEG | CSSM_KEY_HIERARCHY_EXPORT;
constexpr CSSM_PVC_MODE kPolicies = CSSM_PVC_APP | CSSM_PVC_SP;

}  // namespace

CSSM_RETURN CSSM_Init(const CSSM_VERSION *Version, CSSM_PRIVILEGE_SCOPE Scope, const CSSM_GUID *CallerGuid,
                      CSSM_KEY_HIERARCHY KeyHierarchy, CSSM_PVC_MODE *PvcPolicy, const void *Reserved)
{
    if (!Version || !CallerGuid || Reserved)
        return CSSMERR_CSSM_INVALID_POINTER;
    if (!isVersion2(*Version))
        return CSSMERR_CSSM_INCOMPATIBLE_VERSION;
    if (Scope > CSSM_PRIVILEGE_SCOPE_PROCESS)
        return CSSMERR_CSSM_SCOPE_NOT_SUPPORTED;
    if (KeyHierarchy & ~kHierarchies)
        return CSSMERR_CSSM_INVALID_KEY_HIERARCHY;
    if (PvcPolicy && (*PvcPolicy & ~kPolicies))
        return CSSMERR_CSSM_INVALID_PVC;
    if (PvcPolicy)
        *PvcPolicy = CSSM_PVC_NONE;
    return cssm::answering(CSSMERR_CSSM_MEMORY_ERROR, [] { return Registry::shared().init(); });
}

CSSM_RETURN CSSM_Terminate(void)
{
    return cssm::answering(CSSMERR_CSSM_MEMORY_ERROR, [] { return Registry::shared().terminate(); });
}

CSSM_RETURN CSSM_ModuleLoad(const CSSM_GUID *ModuleGuid, CSSM_KEY_HIERARCHY KeyHierarchy,
                            CSSM_API_ModuleEventHandler, void *)
{
    if (!ModuleGuid)
        return CSSMERR_CSSM_INVALID_POINTER;
    if (KeyHierarchy & ~kHierarchies)
        return CSSMERR_CSSM_INVALID_KEY_HIERARCHY;
    if (!isStandardProvider(*ModuleGuid))
        return CSSMERR_CSSM_INVALID_GUID;
    return cssm::answering(CSSMERR_CSSM_MEMORY_ERROR, [] { return Registry::shared().load(); });
}

CSSM_RETURN CSSM_ModuleUnload(const CSSM_GUID *ModuleGuid, CSSM_API_ModuleEventHandler, void *)
{
    if (!ModuleGuid)
        return CSSMERR_CSSM_INVALID_POINTER;
    if (!isStandardProvider(*ModuleGuid))
        return CSSMERR_CSSM_INVALID_GUID;
    return cssm::answering(CSSMERR_CSSM_MEMORY_ERROR, [] { return Registry::shared().unload(); });
}

CSSM_RETURN CSSM_ModuleAttach(const CSSM_GUID *ModuleGuid, const CSSM_VERSION *Version,
                              const CSSM_API_MEMORY_FUNCS *MemoryFuncs, uint32 SubserviceID,
                              CSSM_SERVICE_TYPE SubServiceType, CSSM_ATTACH_FLAGS,
                              CSSM_KEY_HIERARCHY KeyHierarchy, CSSM_FUNC_NAME_ADDR *FunctionTable,
                              uint32 NumFunctionTable, const void *Reserved,
                              CSSM_MODULE_HANDLE_PTR NewModuleHandle)
{
    if (!ModuleGuid || !Version || !MemoryFuncs || !NewModuleHandle || Reserved)
        return CSSMERR_CSSM_INVALID_POINTER;
    if (!isComplete(*MemoryFuncs) || FunctionTable || NumFunctionTable)
        return CSSMERR_CSSM_INVALID_POINTER;
    if (!isVersion2(*Version))
        return CSSMERR_CSSM_INCOMPATIBLE_VERSION;
    if (!isStandardProvider(*ModuleGuid))
        return CSSMERR_CSSM_INVALID_GUID;
    if (KeyHierarchy & ~kHierarchies)
        return CSSMERR_CSSM_INVALID_KEY_HIERARCHY;
    if (SubServiceType != CSSM_SERVICE_CSP)
        return CSSMERR_CSSM_INVALID_SERVICE_MASK;
    if (SubserviceID != 0)
        return CSSMERR_CSSM_INVALID_SUBSERVICEID;
    return cssm::answering(CSSMERR_CSSM_MEMORY_ERROR, [&]() -> CSSM_RETURN {
        if (!cssm::library::context())
            return CSSMERR_CSSM_ADDIN_LOAD_FAILED;
        return Registry::shared().attach(*MemoryFuncs, *NewModuleHandle);
    });
}

CSSM_RETURN CSSM_ModuleDetach(CSSM_MODULE_HANDLE ModuleHandle)
{
    return cssm::answering(CSSMERR_CSSM_MEMORY_ERROR,
                           [&] { return Registry::shared().detach(ModuleHandle); });
}
