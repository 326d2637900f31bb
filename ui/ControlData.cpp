#include <Tarvik/support/CFOwned.h>
#include <Tarvik/ui/ControlData.h>

using tarvik::CFOwned;

CFMutableDataRef ControlCopyData(ControlRef control, ControlPartCode part, ResType tag)
{
    Size asked = 0, read = 0;
    if (!control || GetControlDataSize(control, part, tag, &asked) != noErr)
        return nullptr;
    CFOwned<CFMutableDataRef> data(CFDataCreateMutable(nullptr, asked));
    CFDataSetLength(data.get(), asked);
    if (GetControlData(control, part, tag, asked, CFDataGetMutableBytePtr(data.get()), &read) != noErr ||
        read != asked)
        return nullptr;
    return data.release();
}

Boolean ControlSetData(ControlRef control, CFDataRef data, ControlPartCode part, ResType tag)
{
    return control && data &&
           SetControlData(control, part, tag, CFDataGetLength(data), CFDataGetBytePtr(data)) == noErr;
}

CFMutableStringRef ControlCopyString(ControlRef control)
{
    CFStringRef text = nullptr;
    Size read = 0;
    if (!control || GetControlData(control, kControlEditTextPart, kControlEditTextCFStringTag, sizeof text,
                                   &text, &read) != noErr)
        return nullptr;
    const CFOwned<CFStringRef> owned(text);
    return owned && read == Size(sizeof text) ? CFStringCreateMutableCopy(nullptr, 0, text) : nullptr;
}

Boolean ControlSetString(ControlRef control, CFStringRef string)
{
    return control && string &&
           SetControlData(control, kControlEditTextPart, kControlEditTextCFStringTag, sizeof string,
                          &string) == noErr;
}

CFIndex ControlGetLength(ControlRef control)
{
    const CFOwned<CFMutableStringRef> text(ControlCopyString(control));
    return text ? CFStringGetLength(text.get()) : 0;
}

CFRange ControlGetSelectionRange(ControlRef control)
{
    ControlEditTextSelectionRec selection;
    Size read = 0;
    if (!control ||
        GetControlData(control, kControlEditTextPart, kControlEditTextSelectionTag, sizeof selection,
                       &selection, &read) != noErr ||
        read != Size(sizeof selection))
        return CFRangeMake(0, 0);
    return CFRangeMake(selection.selStart, selection.selEnd - selection.selStart);
}

OSStatus ControlSetSelectionRange(ControlRef control, const CFRange *range)
{
    if (!control || !range)
        return noErr;
    const ControlEditTextSelectionRec selection = {SInt16(range->location),
                                                   SInt16(range->location + range->length)};
    return SetControlData(control, kControlEditTextPart, kControlEditTextSelectionTag, sizeof selection,
                          &selection);
}
