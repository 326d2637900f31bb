#include <Tarvik/support/Handle.h>
#include <Tarvik/ui/InterfaceFiles.h>

namespace {

struct NibTraits {
    using Value = IBNibRef;
    static Value empty() { return nullptr; }
    static void close(Value nib) { DisposeNibReference(nib); }
};

tarvik::Handle<NibTraits> openNib(CFBundleRef bundle, CFStringRef name)
{
    IBNibRef nib = nullptr;
    if (!name ||
        CreateNibReferenceWithCFBundle(bundle ? bundle : CFBundleGetMainBundle(), name, &nib) != noErr)
        nib = nullptr;
    return tarvik::Handle<NibTraits>(nib);
}

}  // namespace

Boolean MenuBarSetFromNibName(CFStringRef nibName, CFStringRef menuBarName)
{
    const auto nib = openNib(nullptr, nibName);
    return nib && menuBarName && SetMenuBarFromNib(nib.get(), menuBarName) == noErr;
}

WindowRef WindowCreateFromNibName(CFStringRef nibName, CFStringRef windowName)
{
    return WindowCreateFromNibNameInBundle(nibName, windowName, nullptr);
}

WindowRef WindowCreateFromNibNameInBundle(CFStringRef nibName, CFStringRef windowName, CFBundleRef bundle)
{
    const auto nib = openNib(bundle, nibName);
    WindowRef window = nullptr;
    return nib && windowName && CreateWindowFromNib(nib.get(), windowName, &window) == noErr ? window
                                                                                             : nullptr;
}
