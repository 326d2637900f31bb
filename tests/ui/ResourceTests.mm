// What user interfaces take from bundles and from the clipboard: interface files, images, copied text.
#import <AppKit/AppKit.h>
#include <Carbon/Controls.h>
#include <Carbon/Scrap.h>
#import <Tarvik/TarvikUI.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Pool.h>
#include <gtest/gtest.h>
#include <tests/support/AppleEvents.h>
#include <tests/support/Program.h>
#include <tests/support/TemporaryFolder.h>
#include <tests/ui/Desktop.h>

@interface CountedWindow : NSWindow
@end
static int gCountedWindows = 0;
@implementation CountedWindow
- (void)dealloc
{
    ++gCountedWindows;
    [super dealloc];
}
@end

namespace {

const char kInterface[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<document type="com.apple.InterfaceBuilder3.Cocoa.XIB" version="3.0" toolsVersion="10117" targetRuntime="MacOSX.Cocoa"><objects>
 <customObject id="-2" userLabel="File's Owner" customClass="NSObject"><connections>
  <outlet property="main" destination="w1" id="o1"/><outlet property="other" destination="w2" id="o2"/>
  <outlet property="menuBar" destination="m1" id="o3"/>
  <outlet property="control demo 7" destination="b1" id="o4"/><outlet property="command save" destination="b1" id="o5"/>
  <outlet property="command open" destination="i2" id="o6"/></connections></customObject>
 <customObject id="-1" userLabel="First Responder" customClass="FirstResponder"/><customObject id="-3" userLabel="Application" customClass="NSObject"/>
 <window title="Main window" customClass="CountedWindow" releasedWhenClosed="NO" visibleAtLaunch="YES" id="w1">
  <windowStyleMask key="styleMask" titled="YES"/><rect key="contentRect" x="196" y="240" width="420" height="260"/>
  <view key="contentView" id="v1"><rect key="frame" x="0.0" y="0.0" width="420" height="260"/><subviews>
   <button tag="12" id="b1"><rect key="frame" x="300" y="16" width="90" height="30"/>
    <buttonCell key="cell" type="push" title="Save" bezelStyle="rounded" alignment="center" borderStyle="border" id="bc1">
     <font key="font" metaFont="system" size="12"/></buttonCell></button></subviews></view></window>
 <window title="Other" customClass="CountedWindow" releasedWhenClosed="NO" visibleAtLaunch="YES" id="w2">
  <windowStyleMask key="styleMask" titled="YES"/><rect key="contentRect" x="96" y="240" width="100" height="60"/>
  <view key="contentView" id="v2"><rect key="frame" x="0.0" y="0.0" width="100" height="60"/></view></window>
 <menu title="Bar" id="m1"><items><menuItem title="File" tag="3" id="i1"><menu key="submenu" title="File" id="m2"><items>
  <menuItem title="Open" tag="7" id="i2"/></items></menu></menuItem></items></menu>
</objects></document>)";

/// A bundle of the test's own.
class Bundle {
public:
    Bundle()
    {
        std::filesystem::create_directories(folder_ / "Resources");
        folder_.write("Resources/Main.xib", kInterface);
        folder_.write("Resources/Broken.xib", "<document><objects><window");
    }
    const TemporaryFolder &folder() const { return folder_; }
    CFBundleRef get() const
    {
        return CFBundleRef([NSBundle bundleWithPath:tarvik::nsstring(folder_.path().native())]);
    }

private:
    TemporaryFolder folder_;
};

TEST(InterfaceFile, GivesAWindowByName)
{
    [NSApplication sharedApplication];
    const Bundle bundle;
    {
        const tarvik::Pool pool;
        const WindowRef window = WindowCreateFromNibNameInBundle(CFSTR("Main"), CFSTR("main"), bundle.get());
        ASSERT_NE(window, nullptr);
        NSWindow *shown = [[[NSWindow alloc] initWithWindowRef:window] autorelease];
        EXPECT_TRUE([[shown title] isEqual:@"Main window"]);
        EXPECT_FALSE(IsWindowVisible(window));
        const ControlRef save = ControlForControlID(window, "demo"_code, 7);
        UInt32 command = 0;
        EXPECT_EQ(GetControlCommandID(save, &command), noErr);
        EXPECT_EQ(command, "save"_code);
        EXPECT_TRUE([[(NSButton *)[NSView viewWithControlRef:save] title] isEqual:@"Save"]);
        ShowWindow(window);
        EXPECT_TRUE(IsWindowVisible(window));
        DisposeWindow(window);
    }
    EXPECT_EQ(gCountedWindows, 2);  // the other one of the file too
    for (CFStringRef none : {CFSTR("nobody"), CFSTR("menuBar"), CFSTR(""), CFStringRef(nullptr)})
        EXPECT_EQ(WindowCreateFromNibNameInBundle(CFSTR("Main"), none, bundle.get()), nullptr);
    for (CFStringRef missing : {CFSTR("Missing"), CFSTR("Broken"), CFStringRef(nullptr)})
        EXPECT_EQ(WindowCreateFromNibNameInBundle(missing, CFSTR("main"), bundle.get()), nullptr);
    EXPECT_EQ(WindowCreateFromNibName(CFSTR("Main"), CFSTR("main")), nullptr);  // the test has no resources
    IBNibRef nib = nullptr;
    EXPECT_EQ(CreateNibReferenceWithCFBundle(bundle.get(), CFSTR("Missing"), &nib),
              kIBCarbonRuntimeCantFindNibFile);
    ASSERT_EQ(CreateNibReferenceWithCFBundle(bundle.get(), CFSTR("Main"), &nib), noErr);
    WindowRef window = nullptr;
    EXPECT_EQ(CreateWindowFromNib(nib, CFSTR("menuBar"), &window), kIBCarbonRuntimeObjectNotOfRequestedType);
    EXPECT_EQ(CreateWindowFromNib(nib, CFSTR("nobody"), &window), kIBCarbonRuntimeCantFindObject);
    DisposeNibReference(nib);
}

TEST(InterfaceFile, GivesTheMenuBar)
{
    [NSApplication sharedApplication];
    const Bundle bundle;
    IBNibRef nib = nullptr;
    ASSERT_EQ(CreateNibReferenceWithCFBundle(bundle.get(), CFSTR("Main"), &nib), noErr);
    EXPECT_EQ(SetMenuBarFromNib(nib, CFSTR("main")), kIBCarbonRuntimeObjectNotOfRequestedType);
    ASSERT_EQ(SetMenuBarFromNib(nib, CFSTR("menuBar")), noErr);
    DisposeNibReference(nib);
    NSMenuItem *open = [[NSApp mainMenu] itemWithTags:3, 7, 0];
    EXPECT_TRUE([[open title] isEqual:@"Open"]);
    UInt32 chosen = 0;
    const EventTypeSpec process = EventTypeSpecMake(kEventClassCommand, kEventCommandProcess);
    const auto choose = [](EventHandlerCallRef, EventRef event, void *userData) -> OSStatus {
        HICommand command = {};
        GetEventParameter(event, kEventParamDirectObject, typeHICommand, nullptr, sizeof command, nullptr,
                          &command);
        *static_cast<UInt32 *>(userData) = command.commandID;
        return noErr;
    };
    EventHandlerRef handler = nullptr;
    ASSERT_EQ(InstallEventHandler(GetApplicationEventTarget(), choose, 1, &process, &chosen, &handler),
              noErr);
    [[open menu] performActionForItemAtIndex:0];
    EXPECT_EQ(chosen, "open"_code);
    RemoveEventHandler(handler);
    EXPECT_FALSE(MenuBarSetFromNibName(CFSTR("Main"), CFSTR("menuBar")));  // not in the main bundle
    EXPECT_FALSE(MenuBarSetFromNibName(nullptr, CFSTR("menuBar")));
}

TEST(BundleImage, TheTypeNamesTheDecoder)
{
    [NSApplication sharedApplication];
    const Bundle bundle;
    // (gnustep-gui writes a JPEG beyond its buffer when the image is much smaller.)
    NSBitmapImageRep *drawn = [[[NSBitmapImageRep alloc] initWithBitmapDataPlanes:nullptr
                                                                       pixelsWide:64
                                                                       pixelsHigh:48
                                                                    bitsPerSample:8
                                                                  samplesPerPixel:3
                                                                         hasAlpha:NO
                                                                         isPlanar:NO
                                                                   colorSpaceName:NSDeviceRGBColorSpace
                                                                      bytesPerRow:0
                                                                     bitsPerPixel:0] autorelease];
    const std::string png = *tarvik::bytes([drawn representationUsingType:NSPNGFileType properties:nil]);
    const std::string jpeg = *tarvik::bytes([drawn representationUsingType:NSJPEGFileType properties:nil]);
    const struct {
        const char *file;
        std::string contents;
        CFStringRef name, type;
        bool decodes;
    } cases[] = {
        {"a.png", png, CFSTR("a"), CFSTR("png"), true},
        {"b.PNG", png, CFSTR("b"), CFSTR("PNG"), true},
        {"c.jpg", jpeg, CFSTR("c"), CFSTR("jpg"), true},
        {"d.png", jpeg, CFSTR("d"), CFSTR("png"), false},
        {"e.gif", jpeg, CFSTR("e"), CFSTR("gif"), true},
        {"f.tiff", png, CFSTR("f"), CFSTR("tiff"), false},
        {"g.png", png.substr(0, 20), CFSTR("g"), CFSTR("png"), false},
        {"h.jpg", "\xFF\xD8\xFF", CFSTR("h"), CFSTR("jpg"), false},
        {"i.jpg", "", CFSTR("i"), CFSTR("jpg"), false},
        {"j.jpg", jpeg.substr(0, 100), CFSTR("j"), CFSTR("jpg"), false},              // cut off in its tables
        {"k.jpg", jpeg.substr(0, jpeg.size() - 20), CFSTR("k"), CFSTR("jpg"), true},  // in its pixels
    };
    for (const auto &each : cases)
        bundle.folder().write(std::string("Resources/") + each.file, each.contents);
    for (const auto &each : cases) {
        CGImageRef image = CGImageCreateWithBundleResource(each.name, each.type, bundle.get());
        EXPECT_EQ(image != nullptr, each.decodes) << each.file;
        if (image) {
            EXPECT_EQ(CGImageGetWidth(image), 64u);
            EXPECT_EQ(CGImageGetHeight(image), 48u);
        }
        CGImageRelease(image);
    }
    CGDataProviderRef provider =
        CGDataProviderCreateWithBundleResource(CFSTR("a"), CFSTR("png"), bundle.get());
    EXPECT_EQ(tarvik::bytes((NSData *)provider), png);
    CGDataProviderRelease(provider);
    EXPECT_EQ(CGImageCreateWithBundleResource(CFSTR("missing"), CFSTR("png"), bundle.get()), nullptr);
    EXPECT_EQ(CGImageCreateWithBundleResource(CFSTR("a"), CFSTR("png"), nullptr),
              nullptr);  // not in the main bundle
    EXPECT_EQ(CGImageCreateWithBundleResource(nullptr, CFSTR("png"), bundle.get()), nullptr);
    EXPECT_EQ(CGImageCreateWithBundleResource(CFSTR("a"), nullptr, bundle.get()), nullptr);
}

TEST(Clipboard, IsTheDesktops)
{
    [NSApplication sharedApplication];
    const ScrapRef scrap = ScrapGetCurrentScrap();
    ASSERT_NE(scrap, nullptr);
    putOnClipboard("from anothér");
    EXPECT_TRUE([[(NSString *)ScrapCopyString(scrap) autorelease] isEqual:@"from anothér"]);
    const auto unicode = [(NSData *)ScrapCopyDataOfFlavor(scrap, kScrapFlavorTypeUnicode) autorelease];
    EXPECT_EQ([unicode length], 24u);

    ASSERT_EQ(ClearCurrentScrap(), noErr);
    EXPECT_EQ(ScrapCopyString(scrap), nullptr);
    ASSERT_EQ(PutScrapFlavor(scrap, "TEXT"_code, kScrapFlavorMaskNone, 6, "to \xC3\xA9!"), noErr);
    ASSERT_EQ(PutScrapFlavor(scrap, "own "_code, kScrapFlavorMaskNone, 3, "a\0b"), noErr);
    EXPECT_EQ(tarvik::bytes([(NSData *)ScrapCopyDataOfFlavor(scrap, "own "_code) autorelease]),
              std::string("a\0b", 3));
    ASSERT_EQ(PutScrapFlavor(scrap, "none"_code, kScrapFlavorMaskNone, 0, nullptr), noErr);
    EXPECT_EQ(ScrapCopyDataOfFlavor(scrap, "none"_code), nullptr);  // nothing in it
    EXPECT_EQ(ScrapCopyDataOfFlavor(scrap, "miss"_code), nullptr);
    EXPECT_EQ(ScrapCopyString(nullptr), nullptr);
    EXPECT_EQ(PutScrapFlavor(scrap, "own "_code, 0, 3, nullptr), nilScrapFlavorDataErr);
    EXPECT_EQ(PutScrapFlavor(nullptr, "own "_code, 0, 3, "abc"), badScrapRefErr);

    // Another program reads while this one answers for it.
    TemporaryFolder folder;
    const std::string path = folder / "pasted";
    ASSERT_EQ(runProgram({"sh", "-c", "timeout 5 xclip -selection clipboard -o > '" + path + "'"}).status, 0);
    EXPECT_EQ(readFile(path), "to \xC3\xA9!");
}

}  // namespace
