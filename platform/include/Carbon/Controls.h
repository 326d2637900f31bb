/// Controls.h: the controls of the older toolbox. A reference stands for an NSView of this process.
///
///     ControlRef field;
///     ControlID name = {'demo', 7};
///     GetControlByID(window, &name, &field);
///     SetControlData(field, kControlEditTextPart, kControlEditTextCFStringTag, sizeof text, &text);
///
/// `-[NSView controlRef]` gives any view's reference, always the same one. A reference is known until its view is deallocated; the
/// functions answer controlHandleInvalidErr for null and for one that is not known any more.
/// Thread: main.
#pragma once
#include <Carbon/MacWindows.h>
#include <CoreFoundation/CFBase.h>

#ifdef __OBJC__
#import <Foundation/NSData.h>
@class NSView;
#endif

CF_EXTERN_C_BEGIN

typedef struct OpaqueControlRef *ControlRef;
typedef ControlRef               HIViewRef;

/// What a host calls a control. Of one that nobody has named, the signature is 0 and the id an NSControl's tag.
typedef struct ControlID {
    OSType signature;
    SInt32 id;
} ControlID;
typedef ControlID HIViewID;

typedef SInt16 ControlPartCode;
enum {
    kControlEntireControl = 0,
    kControlEditTextPart  = 5
};

enum {
    errMessageNotSupported  = -30580,
    errDataNotSupported     = -30581,
    errUnknownControl       = -30584,
    errInvalidPartCode      = -30588,
    errDataSizeMismatch     = -30591,
    controlHandleInvalidErr = -30599
};

// Events. A click on an NSControl that has a command and no action of its own is sent to its window's handlers: first that it was
// hit, then, when nobody takes that, its command (kEventClassCommand, kEventCommandProcess).
enum {
    kEventClassControl = 0x636E746C, ///< 'cntl'
    kEventControlHit   = 13,         ///< its direct object is the control
    typeControlRef     = 0x6374726C  ///< 'ctrl': a ControlRef as an event's parameter
};

// Data, by part and tag.
//
//   tag     of                            data
//   'text'  NSTextField, NSText           the text in the system's encoding
//   'cfst'  NSTextField, NSText           a CFStringRef; the caller of GetControlData releases it
//   'sele'  NSTextField, NSText           a ControlEditTextSelectionRec, in UTF-16 units
//   'lock'  NSTextField, NSText           a Boolean: the user can't edit it
//   'dflt'  NSButton                      a Boolean: Return presses it
//   'cncl'  NSButton                      a Boolean: Escape presses it
//
// The parts are kControlEditTextPart and kControlEntireControl. A view may answer for tags of its own (ControlDataSource, below).
enum {
    kControlEditTextTextTag        = 0x74657874, ///< 'text'
    kControlEditTextCFStringTag    = 0x63667374, ///< 'cfst'
    kControlEditTextSelectionTag   = 0x73656C65, ///< 'sele'
    kControlEditTextLockedTag      = 0x6C6F636B, ///< 'lock'
    kControlStaticTextTextTag      = kControlEditTextTextTag,
    kControlStaticTextCFStringTag  = kControlEditTextCFStringTag,
    kControlPushButtonDefaultTag   = 0x64666C74, ///< 'dflt'
    kControlPushButtonCancelTag    = 0x636E636C  ///< 'cncl'
};

typedef struct ControlEditTextSelectionRec {
    SInt16 selStart;
    SInt16 selEnd;
} ControlEditTextSelectionRec;

/// errDataNotSupported: the view has no such data; errInvalidPartCode.
OSStatus GetControlDataSize(ControlRef control, ControlPartCode part, ResType tag, Size *outSize);
/// Copies what fits; outActualSize (which may be null) is what there is. A null buffer copies nothing.
OSStatus GetControlData(ControlRef control, ControlPartCode part, ResType tag, Size bufferSize, void *buffer, Size *outActualSize);
/// errDataSizeMismatch: not the size of such data; paramErr: not the data. A selection is cut to the text; in a field that is not being
/// edited it is kept until SetKeyboardFocus.
OSStatus SetControlData(ControlRef control, ControlPartCode part, ResType tag, Size size, const void *data);

/// Lets the user type into the control, in a window that is shown. errMessageNotSupported for one that takes no keys.
OSStatus SetKeyboardFocus(WindowRef window, ControlRef control, ControlPartCode part);

// Who it is, and where.
OSStatus  GetControlID(ControlRef control, ControlID *outID);
OSStatus  SetControlID(ControlRef control, const ControlID *name);
OSStatus  GetControlCommandID(ControlRef control, UInt32 *outCommandID); ///< 0 until it is set
OSStatus  SetControlCommandID(ControlRef control, UInt32 commandID);
WindowRef GetControlOwner(ControlRef control); ///< null without a window

/// The first one of the name in the window, the outer ones before the inner. errUnknownControl without one.
OSStatus GetControlByID(WindowRef window, const ControlID *name, ControlRef *outControl);
/// The view that holds a window's others.
HIViewRef HIViewGetRoot(WindowRef window);
/// The first one of the name among the view and those in it. errUnknownControl without one.
OSStatus HIViewFindByID(HIViewRef start, HIViewID name, HIViewRef *outView);

// Bounds are counted from the top left corner of the window's content, y growing down.
Rect *GetControlBounds(ControlRef control, Rect *outBounds); ///< its argument; all zeros for an unknown control
void  SetControlBounds(ControlRef control, const Rect *bounds);
/// Where it stands, as large as its cell needs: all zeros for a control without a cell. outBaseLineOffset (which may be null): from
/// the bottom up to the text's base line, as a negative number. errMessageNotSupported for a view that is no NSControl.
OSErr GetBestControlRect(ControlRef control, Rect *outRect, SInt16 *outBaseLineOffset);

CF_EXTERN_C_END

#ifdef __OBJC__
#import <AppKit/NSView.h>

@interface NSView (ControlReference)
- (ControlRef)controlRef;
+ (NSView *)viewWithControlRef:(ControlRef)control; ///< nil for one that is not known
@end

/// What a view may implement that has data of its own.
@interface NSObject (ControlDataSource)
- (NSData *)controlDataForPart:(ControlPartCode)part tag:(ResType)tag;                     ///< nil: no such data
- (BOOL)setControlData:(NSData *)data forPart:(ControlPartCode)part tag:(ResType)tag;      ///< NO: no such data, or not this
@end
#endif
