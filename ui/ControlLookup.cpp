#include <Tarvik/ui/ControlLookup.h>
#include <Tarvik/ui/RectGeometry.h>

ControlRef ControlForControlID(WindowRef window, OSType signature, SInt32 id)
{
    const ControlID name = {signature, id};
    ControlRef found = nullptr;
    return window && GetControlByID(window, &name, &found) == noErr ? found : nullptr;
}

HIViewRef HIViewFindFromView(HIViewRef view, OSType signature, SInt32 id)
{
    HIViewRef found = nullptr;
    return view && HIViewFindByID(view, {signature, id}, &found) == noErr ? found : nullptr;
}

HIViewRef HIViewFindFromWindow(WindowRef window, OSType signature, SInt32 id)
{
    return window ? HIViewFindFromView(HIViewGetRoot(window), signature, id) : nullptr;
}

int32_t ControlGetWindowRefCon(ControlRef control)
{
    const WindowRef window = control ? GetControlOwner(control) : nullptr;
    return window ? int32_t(GetWRefCon(window)) : 0;
}

Boolean ControlSizeToFit(ControlRef control, ControlSizeAdjuster adjust, void *userData)
{
    if (!control)
        return false;
    Rect bounds, best;
    SInt16 baseLine = 0;
    GetControlBounds(control, &bounds);
    if (GetBestControlRect(control, &best, &baseLine) != noErr || RectIsEqualTo(best, RectMake(0, 0, 0, 0)))
        return false;
    if (!adjust || adjust(&bounds, &best, userData))
        SetControlBounds(control, &best);
    return true;
}

int32_t WindowDumpControlHierarchy(void) { return 0; }
