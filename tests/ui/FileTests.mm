// Files in views: icons, drags, text, and opening them.
#import <Tarvik/TarvikUI.h>
#import <Tarvik/support/Bridge.h>
#include <gtest/gtest.h>
#include <tests/support/Program.h>
#include <tests/support/TemporaryFolder.h>
#include <tests/ui/Desktop.h>

#include <cstdlib>

/// Takes what is dragged onto it.
@interface DropTarget : NSView {
@public
    NSArray *mPaths;
    NSString *mText;
    NSData *mBytes;
}
@end
@implementation DropTarget
- (NSDragOperation)draggingEntered:(id<NSDraggingInfo>)info
{
    return (void)info, NSDragOperationCopy;
}
- (BOOL)performDragOperation:(id<NSDraggingInfo>)info
{
    NSObject *carrier = (NSObject *)info;
    mPaths = [[carrier pasteboardPropertyListForType:NSFilenamesPboardType] copy];
    mText = [carrier pasteboardStringForType:NSStringPboardType];
    return YES;
}
- (void)dealloc
{
    [mPaths release];
    [super dealloc];
}
@end

/// As much of a dragging-info object as the additions look at.
@interface Carrier : NSObject {
@public
    NSPasteboard *mPasteboard;
}
- (NSPasteboard *)draggingPasteboard;
@end
@implementation Carrier
- (NSPasteboard *)draggingPasteboard
{
    return mPasteboard;
}
@end

namespace {

namespace fs = std::filesystem;

TEST(FileIconView, IsDraggedOutAsItsFiles)
{
    const TestWindow from, to(NSMakeRect(700, 300, 200, 200));
    FileIconView *icon = [[[FileIconView alloc] init] autorelease];
    EXPECT_TRUE([[icon registeredDraggedTypes] containsObject:NSFilenamesPboardType]);
    [icon setFrame:NSMakeRect(20, 20, 60, 60)];
    from.add(icon);
    DropTarget *target = to.add([[[DropTarget alloc] initWithFrame:NSMakeRect(0, 0, 200, 200)] autorelease]);
    [target registerForDraggedTypes:[NSArray arrayWithObject:NSFilenamesPboardType]];
    NSArray *paths = [NSArray arrayWithObjects:@"/etc/passwd", @"/tmp/no such file", nil];
    [icon setFiles:paths];
    NSImage *shown = [icon image];
    EXPECT_TRUE(shown != nil);
    [icon setFile:nil];
    [icon setFiles:nil];
    EXPECT_EQ([icon image], shown);
    to.show();
    from.show();

    const Hand hand("mousemove " + middleOf(icon) +
                    " sleep 0.1 mousedown 1 sleep 0.25 mousemove_relative 15 5 sleep 0.1 mousemove " +
                    middleOf(target) + " sleep 0.25 mousemove_relative 3 3 sleep 0.25 mouseup 1");
    EXPECT_TRUE(eventually([&] { return target->mPaths != nil; }));
    EXPECT_TRUE([target->mPaths isEqual:paths]);
    EXPECT_EQ(target->mText, nil);
}

TEST(FileIconView, WithoutFilesHasNothingToDrag)
{
    const TestWindow window;
    FileIconView *icon =
        window.add([[[FileIconView alloc] initWithFrame:NSMakeRect(0, 0, 50, 50)] autorelease]);
    NSEvent *press = [NSEvent mouseEventWithType:NSLeftMouseDown
                                        location:NSMakePoint(5, 5)
                                   modifierFlags:0
                                       timestamp:0
                                    windowNumber:[window.get() windowNumber]
                                         context:nil
                                     eventNumber:0
                                      clickCount:1
                                        pressure:0];
    [icon mouseDown:press];
    [icon setFile:@"/etc/passwd"];  // also one that was not made by init
    EXPECT_TRUE([icon image] != nil);
    EXPECT_TRUE([icon makeMembers]);
}

TEST(Icons, AreTheWorkspaces)
{
    const TestWindow window;
    NSImageView *view = [[[NSImageView alloc] initWithFrame:NSMakeRect(0, 0, 48, 48)] autorelease];
    NSWorkspace *workspace = [NSWorkspace sharedWorkspace];
    [view setIconImageForFile:@"~"];
    EXPECT_EQ([view image], [workspace iconForFile:NSHomeDirectory()]);
    [view setIconImageForFileType:@"txt"];
    NSImage *text = [view image];
    EXPECT_TRUE(text != nil);
    [view setIconImageForFile:nil], [view setIconImageForFiles:nil], [view setIconImageForFileType:nil];
    EXPECT_EQ([view image], text);
    [view setIconImageForFiles:[NSArray arrayWithObjects:@"/", @"/etc/passwd", @"/usr", @"/etc", nil]];
    NSImage *several = [view image];
    ASSERT_TRUE(several != nil);
    EXPECT_TRUE(NSEqualSizes([several size], NSMakeSize(48, 48)));
    [several lockFocus];
    NSBitmapImageRep *pixels =
        [[[NSBitmapImageRep alloc] initWithFocusedViewRect:NSMakeRect(0, 0, 48, 48)] autorelease];
    [several unlockFocus];
    bool drawn = false;
    for (int i = 0; i < 48 && !drawn; ++i)
        drawn = [[pixels colorAtX:i y:24] alphaComponent] > 0.5;
    EXPECT_TRUE(drawn);
}

TEST(Pasteboard, ACarrierGivesOnlyWhatItHolds)
{
    Carrier *carrier = [[[Carrier alloc] init] autorelease];
    EXPECT_EQ([carrier pasteboardStringForType:NSStringPboardType], nil);
    EXPECT_EQ([@"no carrier" pasteboardDataForType:NSStringPboardType], nil);
    carrier->mPasteboard = [NSPasteboard pasteboardWithUniqueName];
    [carrier->mPasteboard declareTypes:[NSArray arrayWithObjects:NSStringPboardType, @"own", nil] owner:nil];
    [carrier->mPasteboard setString:@"some téxt" forType:NSStringPboardType];
    [carrier->mPasteboard setPropertyList:[NSArray arrayWithObject:@"x"] forType:@"own"];
    EXPECT_TRUE([[carrier pasteboardStringForType:NSStringPboardType] isEqual:@"some téxt"]);
    EXPECT_TRUE([[carrier pasteboardPropertyListForType:@"own"] isEqual:[NSArray arrayWithObject:@"x"]]);
    EXPECT_GT([[carrier pasteboardDataForType:@"own"] length], 0u);
    // What it declares and does not have, or has as something else.
    [carrier->mPasteboard declareTypes:[NSArray arrayWithObjects:NSFilenamesPboardType, @"own", nil]
                                 owner:nil];
    [carrier->mPasteboard setData:tarvik::nsdata("\xFF\xFE\x01 no list") forType:@"own"];
    EXPECT_EQ([carrier pasteboardPropertyListForType:@"own"], nil);
    for (NSString *missing : {(NSString *)nil, NSFilenamesPboardType, NSTIFFPboardType}) {
        EXPECT_EQ([carrier pasteboardDataForType:missing], nil);
        EXPECT_EQ([carrier pasteboardPropertyListForType:missing], nil);
        EXPECT_EQ([carrier pasteboardStringForType:missing], nil);
    }
}

TEST(TextFile, IsShownInItsEncoding)
{
    [NSApplication sharedApplication];
    TemporaryFolder folder;
    NSString *latin = tarvik::nsstring(folder.write("latin", "caf\xE9\n"));
    NSText *view = [[[NSText alloc] initWithFrame:NSMakeRect(0, 0, 100, 100)] autorelease];
    [view setStringFromFile:latin encoding:NSISOLatin1StringEncoding];
    EXPECT_TRUE([[view string] isEqual:@"café\n"]);
    [view setStringFromFile:latin encoding:NSUTF8StringEncoding];  // not UTF-8
    [view setStringFromFile:nil encoding:NSUTF8StringEncoding];
    [view setStringFromFile:tarvik::nsstring((folder / "none").native()) encoding:NSUTF8StringEncoding];
    EXPECT_TRUE([[view string] isEqual:@"café\n"]);
    [view setStringFromFile:tarvik::nsstring(folder.write("empty", "")) encoding:NSUTF8StringEncoding];
    EXPECT_TRUE([[view string] isEqual:@""]);
}

TEST(WorkspaceOpening, AsksTheDesktopsApplications)
{
    [NSApplication sharedApplication];
    TemporaryFolder folder;
    const fs::path root = fs::canonical(folder.path());
    setenv("XDG_DATA_HOME", (root / "data").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (root / "config").c_str(), 1);
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    fs::create_directories(root / "data/applications");
    fs::create_directories(root / "config");
    fs::create_directories(root / "papers");
    fs::permissions(folder.write("viewer", "#!/bin/sh\necho \"$1\" > '" + (root / "new").native() +
                                               "' && mv '" + (root / "new").native() + "' '" +
                                               (root / "said").native() + "'\n"),
                    fs::perms(0755));
    folder.write("data/applications/viewer.desktop",
                 "[Desktop Entry]\nType=Application\nName=V\nExec=" + (root / "viewer").native() + " %U\n");
    folder.write("config/mimeapps.list",
                 "[Default Applications]\ntext/plain=viewer.desktop\ninode/directory=viewer.desktop\n"
                 "x-scheme-handler/tarvik-test=viewer.desktop\n");
    const auto said = [&] {
        eventually([&] { return fs::exists(root / "said"); });
        const std::string words = folder.read("said");
        fs::remove(root / "said");
        return words;
    };
    NSString *letter = tarvik::nsstring(folder.write("papers/letter.txt", "Dear\n"));
    EXPECT_TRUE([letter open]);
    EXPECT_TRUE(said().ends_with("/papers/letter.txt\n"));
    EXPECT_TRUE([letter show]);  // without a file manager on a bus: its folder is opened
    EXPECT_TRUE(said().ends_with("/papers\n"));
    EXPECT_TRUE([@"tarvik-test:hello" openAsURL]);
    EXPECT_EQ(said(), "tarvik-test:hello\n");
    for (NSString *nothing : {@"/no/such/file.txt", @"relative.txt", @""}) {
        EXPECT_FALSE([nothing open]);
        EXPECT_FALSE([nothing show]);
    }
    EXPECT_FALSE([@"nobody-opens-this:x" openAsURL]);
    EXPECT_FALSE([@"not a url" openAsURL]);
}

}  // namespace
