// The NSView behind a ControlRef.
#pragma once
#import <AppKit/NSView.h>
#include <Carbon/Controls.h>

#include <optional>

struct OpaqueControlRef {
    explicit OpaqueControlRef(NSView *aView) : view(aView) {}
    static Class base() { return [NSView class]; }

    NSView *view;
    std::optional<ControlID> name;
    UInt32 commandID = 0;
    std::optional<ControlEditTextSelectionRec> selection;  // of a field that is not being edited
};

/// Null for null and for a reference that is not known.
OpaqueControlRef *KnownControl(ControlRef reference);
/// Null for nil.
ControlRef ReferenceOfView(NSView *view);
