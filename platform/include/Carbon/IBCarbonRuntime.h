/// IBCarbonRuntime.h: interface files, and the windows and menu bars in them.
///
///     IBNibRef nib;
///     if (CreateNibReference(CFSTR("Main"), &nib) == noErr) {    // Main.xib in the main bundle
///         CreateWindowFromNib(nib, CFSTR("Preferences"), &window);
///         DisposeNibReference(nib);
///     }
///
/// Files are those that AppKit loads: X.xib (text), X.nib, X.gorm. In them a window or menu has the name of the outlet of the File's
/// Owner that leads to it, whose first letter may be of either case:
///
///     <customObject id="-2" userLabel="File's Owner" customClass="NSObject"><connections>
///         <outlet property="Preferences" destination="w1" id="o1"/>
///         <outlet property="control demo 7" destination="b1" id="o2"/>    the view's control ID is {'demo', 7}
///         <outlet property="command save" destination="b1" id="o3"/>      its command ID is 'save', which a click sends
///         <outlet property="command quit" destination="i1" id="o4"/>      so does choosing a menu item
///
/// Thread: main.
#pragma once
#include <Carbon/MacWindows.h>
#include <CoreFoundation/CFBundle.h>

CF_EXTERN_C_BEGIN

typedef struct OpaqueIBNibRef *IBNibRef;

enum {
    kIBCarbonRuntimeCantFindNibFile          = -10960,
    kIBCarbonRuntimeObjectNotOfRequestedType = -10961,
    kIBCarbonRuntimeCantFindObject           = -10962 ///< also when the file is none
};

/// The caller disposes of the reference. Null arguments: paramErr.
OSStatus CreateNibReferenceWithCFBundle(CFBundleRef bundle, CFStringRef nibName, IBNibRef *outNib);
OSStatus CreateNibReference(CFStringRef nibName, IBNibRef *outNib); ///< in the main bundle
void     DisposeNibReference(IBNibRef nib);

/// A new window each time, not shown, which DisposeWindow releases. What else the file holds is released, unless the window refers
/// to it and keeps it.
OSStatus CreateWindowFromNib(IBNibRef nib, CFStringRef name, WindowRef *outWindow);
/// Makes the menu the application's.
OSStatus SetMenuBarFromNib(IBNibRef nib, CFStringRef name);

CF_EXTERN_C_END
