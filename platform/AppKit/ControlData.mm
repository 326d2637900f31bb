#import "platform/AppKit/private/ControlReference.h"
#import "platform/AppKit/private/WindowReference.h"

#import <AppKit/NSButton.h>
#import <AppKit/NSText.h>
#import <AppKit/NSTextField.h>
#include <CoreFoundation/CFString.h>
#import <Tarvik/support/Guard.h>
#import <Tarvik/support/Retained.h>

#include <algorithm>
#include <cstring>

namespace {

using Data = tarvik::Retained<NSData *>;

NSData *dataOf(const void *bytes, size_t size) { return [NSData dataWithBytes:bytes length:size]; }

// Texts: a field, whose editor is there while it is being edited, or a text view.

bool isText(NSView *view)
{
    return [view isKindOfClass:[NSText class]] || [view isKindOfClass:[NSTextField class]];
}

NSText *editorOf(NSView *view)
{
    return [view isKindOfClass:[NSText class]] ? (NSText *)view : [(NSTextField *)view currentEditor];
}

NSString *textOf(NSView *view)
{
    return [view isKindOfClass:[NSText class]] ? [(NSText *)view string] : [(NSTextField *)view stringValue];
}

void setText(NSView *view, NSString *text)
{
    if ([view isKindOfClass:[NSText class]])
        [(NSText *)view setString:text];
    else
        [(NSTextField *)view setStringValue:text];
}

void select(NSText *editor, ControlEditTextSelectionRec selection)
{
    const long length = long([[editor string] length]);
    const long start = std::clamp<long>(selection.selStart, 0, length);
    const long end = std::clamp<long>(selection.selEnd, start, length);
    [editor setSelectedRange:NSMakeRange(NSUInteger(start), NSUInteger(end - start))];
}

ControlEditTextSelectionRec selectionOf(const OpaqueControlRef &control)
{
    if (NSText *editor = editorOf(control.view)) {
        const NSRange range = [editor selectedRange];
        const auto place = [](NSUInteger at) { return SInt16(std::min<NSUInteger>(at, INT16_MAX)); };
        return {place(range.location), place(NSMaxRange(range))};
    }
    return control.selection.value_or(ControlEditTextSelectionRec{});
}

NSData *textData(const OpaqueControlRef &control, ResType tag)
{
    NSView *view = control.view;
    switch (tag) {
    case kControlEditTextTextTag:
        return [(NSData *)CFStringCreateExternalRepresentation(nullptr, (CFStringRef)textOf(view),
                                                               CFStringGetSystemEncoding(), '?') autorelease];
    case kControlEditTextCFStringTag: {
        const CFStringRef text = (CFStringRef)textOf(view);
        return dataOf(&text, sizeof text);
    }
    case kControlEditTextSelectionTag: {
        const ControlEditTextSelectionRec selection = selectionOf(control);
        return dataOf(&selection, sizeof selection);
    }
    case kControlEditTextLockedTag: {
        const Boolean locked = ![(NSTextField *)view isEditable];  // an NSText has the method too
        return dataOf(&locked, sizeof locked);
    }
    default: return nil;
    }
}

OSStatus setTextData(OpaqueControlRef &control, ResType tag, Size size, const void *data)
{
    NSView *view = control.view;
    switch (tag) {
    case kControlEditTextTextTag: {
        const auto bytes = tarvik::retain(dataOf(data, size_t(size)));
        NSString *text = [(NSString *)CFStringCreateFromExternalRepresentation(
            nullptr, (CFDataRef)bytes.get(), CFStringGetSystemEncoding()) autorelease];
        if (!text)
            return paramErr;
        setText(view, text);
        return noErr;
    }
    case kControlEditTextCFStringTag: {
        if (size != Size(sizeof(CFStringRef)))
            return errDataSizeMismatch;
        CFStringRef text;
        std::memcpy(&text, data, sizeof text);
        if (!text)
            return paramErr;
        setText(view, (NSString *)text);
        return noErr;
    }
    case kControlEditTextSelectionTag: {
        ControlEditTextSelectionRec selection;
        if (size != Size(sizeof selection))
            return errDataSizeMismatch;
        std::memcpy(&selection, data, sizeof selection);
        if (NSText *editor = editorOf(view))
            select(editor, selection);
        else
            control.selection = selection;
        return noErr;
    }
    case kControlEditTextLockedTag: {
        if (size != Size(sizeof(Boolean)))
            return errDataSizeMismatch;
        [(NSTextField *)view setEditable:!*static_cast<const Boolean *>(data)];
        return noErr;
    }
    default: return errDataNotSupported;
    }
}

// Push buttons, pressed by Return or Escape.

NSString *keyOf(ResType tag)
{
    switch (tag) {
    case kControlPushButtonDefaultTag: return @"\r";
    case kControlPushButtonCancelTag: return @"\033";
    default: return nil;
    }
}

NSData *buttonData(NSButton *button, ResType tag)
{
    NSString *key = keyOf(tag);
    if (!key)
        return nil;
    const Boolean presses = [[button keyEquivalent] isEqualToString:key];
    return dataOf(&presses, sizeof presses);
}

OSStatus setButtonData(NSButton *button, ResType tag, Size size, const void *data)
{
    NSString *key = keyOf(tag);
    if (!key)
        return errDataNotSupported;
    if (size != Size(sizeof(Boolean)))
        return errDataSizeMismatch;
    const bool presses = *static_cast<const Boolean *>(data);
    if (presses || [[button keyEquivalent] isEqualToString:key])
        [button setKeyEquivalent:presses ? key : @""];
    return noErr;
}

bool isPart(ControlPartCode part) { return part == kControlEditTextPart || part == kControlEntireControl; }

OSStatus copyData(ControlRef reference, ControlPartCode part, ResType tag, Data &data)
{
    const OpaqueControlRef *control = KnownControl(reference);
    if (!control)
        return controlHandleInvalidErr;
    OSStatus status = errDataNotSupported;
    tarvik::attempt([&] {
        NSView *view = control->view;
        NSData *found = nil;
        if ([view respondsToSelector:@selector(controlDataForPart:tag:)])
            found = [view controlDataForPart:part tag:tag];
        if (!found && !isPart(part)) {
            status = errInvalidPartCode;
            return;
        }
        if (!found && isText(view))
            found = textData(*control, tag);
        else if (!found && [view isKindOfClass:[NSButton class]])
            found = buttonData((NSButton *)view, tag);
        if (found) {
            data = tarvik::retain(found);
            status = noErr;
        }
    });
    return status;
}

}  // namespace

OSStatus GetControlDataSize(ControlRef control, ControlPartCode part, ResType tag, Size *outSize)
{
    if (!outSize)
        return paramErr;
    Data data;
    if (const OSStatus error = copyData(control, part, tag, data))
        return error;
    *outSize = Size([data.get() length]);
    return noErr;
}

OSStatus GetControlData(ControlRef control, ControlPartCode part, ResType tag, Size bufferSize, void *buffer,
                        Size *outActualSize)
{
    if (bufferSize < 0)
        return paramErr;
    Data data;
    if (const OSStatus error = copyData(control, part, tag, data))
        return error;
    const Size size = Size([data.get() length]);
    if (outActualSize)
        *outActualSize = size;
    if (!buffer)
        return noErr;
    if (const Size fits = std::min(size, bufferSize))  // empty data may have no bytes to point to
        std::memcpy(buffer, [data.get() bytes], size_t(fits));
    if (tag == kControlEditTextCFStringTag && isText(KnownControl(control)->view) && bufferSize >= size)
        CFRetain(*static_cast<CFStringRef *>(buffer));
    return noErr;
}

OSStatus SetControlData(ControlRef reference, ControlPartCode part, ResType tag, Size size, const void *data)
{
    OpaqueControlRef *control = KnownControl(reference);
    if (!control)
        return controlHandleInvalidErr;
    if (size < 0 || (!data && size > 0))
        return paramErr;
    OSStatus status = paramErr;
    tarvik::attempt([&] {
        NSView *view = control->view;
        if ([view respondsToSelector:@selector(setControlData:forPart:tag:)] &&
            [view setControlData:dataOf(data, size_t(size)) forPart:part tag:tag])
            status = noErr;
        else if (!isPart(part))
            status = errInvalidPartCode;
        else if (isText(view))
            status = setTextData(*control, tag, size, data);
        else if ([view isKindOfClass:[NSButton class]])
            status = setButtonData((NSButton *)view, tag, size, data);
        else
            status = errDataNotSupported;
    });
    return status;
}

OSStatus SetKeyboardFocus(WindowRef window, ControlRef control, ControlPartCode part)
{
    NSWindow *found = WindowOfReference(window);
    if (!found)
        return errInvalidWindowPtr;
    OpaqueControlRef *record = KnownControl(control);
    if (!record || [record->view window] != found)
        return controlHandleInvalidErr;
    if (!isPart(part))
        return errInvalidPartCode;
    if (![record->view acceptsFirstResponder] || ![found makeFirstResponder:record->view])
        return errMessageNotSupported;
    NSText *editor = isText(record->view) ? editorOf(record->view) : nil;
    if (editor && record->selection) {
        select(editor, *record->selection);
        record->selection.reset();
    }
    return noErr;
}
