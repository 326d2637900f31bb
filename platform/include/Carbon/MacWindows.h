/// MacWindows.h: the windows of the older toolbox. A reference stands for an NSWindow of this process.
///
///     WindowRef window;
///     Rect bounds = {100, 100, 300, 500};    // top, left, bottom, right: the content, y growing down the screen
///     if (CreateNewWindow(kDocumentWindowClass, kWindowStandardDocumentAttributes, &bounds, &window) == noErr)
///         ShowWindow(window);
///
/// `-[NSWindow windowRef]` gives any window's reference, always the same one, and `-[NSWindow initWithWindowRef:]` the window of a
/// reference. A reference is known until its window is disposed of or deallocated; the functions answer errInvalidWindowPtr
/// (or nothing) for null and for one that is not known any more.
/// Thread: main.
#pragma once
#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

typedef struct OpaqueWindowPtr *WindowRef;
typedef WindowRef               WindowPtr;

typedef UInt32 WindowClass;
enum {
    kAlertWindowClass        = 1,
    kMovableAlertWindowClass = 2,
    kModalWindowClass        = 3,
    kMovableModalWindowClass = 4,
    kFloatingWindowClass     = 5,
    kDocumentWindowClass     = 6,
    kUtilityWindowClass      = 8,
    kSheetWindowClass        = 11,
    kPlainWindowClass        = 13 ///< without a frame
};

typedef UInt32 WindowAttributes;
enum {
    kWindowNoAttributes               = 0,
    kWindowCloseBoxAttribute          = 1 << 0,
    kWindowHorizontalZoomAttribute    = 1 << 1,
    kWindowVerticalZoomAttribute      = 1 << 2,
    kWindowFullZoomAttribute          = kWindowHorizontalZoomAttribute | kWindowVerticalZoomAttribute,
    kWindowCollapseBoxAttribute       = 1 << 3,
    kWindowResizableAttribute         = 1 << 4,
    kWindowStandardDocumentAttributes = kWindowCloseBoxAttribute | kWindowFullZoomAttribute | kWindowCollapseBoxAttribute | kWindowResizableAttribute
};

typedef UInt16 WindowRegionCode;
enum {
    kWindowStructureRgn = 32, ///< with its frame
    kWindowContentRgn   = 33
};

enum {
    errInvalidWindowPtr                    = -5600,
    errUnsupportedWindowAttributesForClass = -5601,
    errUnrecognizedWindowClass             = -5605
};

/// Makes a window that is not shown yet, and that DisposeWindow releases. errUnrecognizedWindowClass,
/// errUnsupportedWindowAttributesForClass, paramErr for null and for an empty content; unimpErr without a display.
OSStatus CreateNewWindow(WindowClass windowClass, WindowAttributes attributes, const Rect *contentBounds, WindowRef *outWindow);
/// Closes the window; one that CreateNewWindow made is released, any other one stays its owner's.
void    DisposeWindow(WindowRef window);
Boolean IsValidWindowPtr(WindowRef window);

OSStatus GetWindowClass(WindowRef window, WindowClass *outClass); ///< of a window made by AppKit: by its style and level
OSStatus GetWindowAttributes(WindowRef window, WindowAttributes *outAttributes);

// Bounds are on the screen, from the top left corner of the first one.
OSStatus GetWindowBounds(WindowRef window, WindowRegionCode region, Rect *bounds);
OSStatus SetWindowBounds(WindowRef window, WindowRegionCode region, const Rect *bounds);

void    ShowWindow(WindowRef window);
void    HideWindow(WindowRef window);
void    SelectWindow(WindowRef window); ///< in front of the others and key
Boolean IsWindowVisible(WindowRef window);

/// Shows a window as a sheet of another, which takes no input until the sheet ends (HideSheetWindow; a standard sheet ends by
/// its buttons). Returns at once; a second sheet waits for the first one's end.
OSStatus ShowSheetWindow(WindowRef sheet, WindowRef parentWindow);
OSStatus HideSheetWindow(WindowRef sheet);

typedef UInt32 WindowPositionMethod;
enum {
    kWindowCenterOnMainScreen                = 1,
    kWindowCenterOnParentWindow              = 2,
    kWindowCenterOnParentWindowScreen        = 3,
    kWindowCascadeOnMainScreen               = 4, ///< each window a little below and to the right of the one before
    kWindowCascadeOnParentWindow             = 5,
    kWindowCascadeOnParentWindowScreen       = 6,
    kWindowAlertPositionOnMainScreen         = 7, ///< centred across, a fifth of the room left over above it
    kWindowAlertPositionOnParentWindow       = 8,
    kWindowAlertPositionOnParentWindowScreen = 9,
    kWindowCascadeStartAtParentWindowScreen  = 10 ///< the first one at its parent's top left corner
};
/// Moves a window, frame and all; on the screen as far as it fits there. A parent is needed by the methods that name one; paramErr without it
/// and for another method.
OSStatus RepositionWindow(WindowRef window, WindowRef parentWindow, WindowPositionMethod method);

OSStatus SetWindowTitleWithCFString(WindowRef window, CFStringRef title);
OSStatus CopyWindowTitleAsCFString(WindowRef window, CFStringRef *outTitle); ///< the caller releases it

/// The reference constant is the host's own.
SRefCon GetWRefCon(WindowRef window); ///< 0 until it is set
void    SetWRefCon(WindowRef window, SRefCon constant);

CF_EXTERN_C_END
