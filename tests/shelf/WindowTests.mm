// The application's window, with the application's own objects, driven by keys, clicks, drags and pasteboards.
#include <tests/shelf/ShelfFixture.h>
#include <tests/support/Program.h>

#include <unistd.h>

namespace {

using namespace shelf;

TEST_F(ShelfApplication, KeepsItsRows)
{
    EXPECT_FALSE([shelf_->mWindow->mEmpty isHidden]);
    for (const char *name : {"b.img", "a.img", "c.img"})
        add(name);
    EXPECT_TRUE([shelf_->mWindow->mEmpty isHidden]);
    add("a.img");  // there already: shown, not added
    EXPECT_EQ(names(), "bac");
    EXPECT_EQ([shelf_->mWindow->mTable selectedRow], 1);
    [shelf_->mWindow->mTable selectRow:0 asExtending:NO andEdit:NO];
    [shelf_ tableController:shelf_->mRows convertSetEditedValue:@" " forColumnIdentifier:kName row:0];
    [shelf_->mWindow setFrame:NSMakeRect(150, 160, 900, 500) display:NO];
    close();
    open();
    EXPECT_EQ(names(), "bac");
    EXPECT_EQ(NSWidth([shelf_->mWindow frame]), 900);
}

// Whatever came between a deletion and its way back.
TEST_F(ShelfApplication, UndoesAndRedoesTheSameRows)
{
    const std::string a = add("a.img");
    add("b.img");
    select({0});
    [shelf_->mRows delete:nil];
    EXPECT_EQ(names(), "b");
    [shelf_ undo:nil];
    EXPECT_EQ(names(), "ab");
    [shelf_ addPaths:[NSArray arrayWithObject:ns(folder_.write("c.img", "c"))] atIndex:0];
    EXPECT_EQ(names(), "cab");
    [shelf_ redo:nil];
    EXPECT_EQ(names(), "cb");
    [shelf_ addPaths:[NSArray arrayWithObject:ns(a)] atIndex:0];
    EXPECT_EQ(names(), "acb");
    [shelf_ undo:nil];
    EXPECT_EQ(names(), "acb") << "each image once";
    EXPECT_TRUE(idle());
}

TEST_F(ShelfApplication, DeletesAndUndoes)
{
    for (const char *name : {"a.img", "b.img", "c.img", "d.img"})
        add(name);
    select({0, 2});
    [shelf_->mRows delete:nil];
    EXPECT_EQ(names(), "bd");
    EXPECT_TRUE([shelf_ validateAction:@selector(undo:)]);
    [shelf_ undo:nil];
    EXPECT_EQ(names(), "abcd");
    EXPECT_EQ([shelf_->mWindow->mTable numberOfSelectedRows], 2);
    [shelf_ redo:nil];
    EXPECT_EQ(names(), "bd");
    [shelf_ undo:nil];
    EXPECT_EQ(names(), "abcd");
    select({1});
    NSString *key = [NSString stringWithFormat:@"%C", unichar(NSDeleteFunctionKey)];
    [NSApp postEvent:[NSEvent keyEventWithType:NSKeyDown
                                            location:NSZeroPoint
                                       modifierFlags:0
                                           timestamp:0
                                        windowNumber:[shelf_->mWindow windowNumber]
                                             context:nil
                                          characters:key
                         charactersIgnoringModifiers:key
                                           isARepeat:NO
                                             keyCode:0]
             atStart:NO];
    EXPECT_TRUE(eventually([this] { return names() == "acd"; }));
}

TEST_F(ShelfApplication, CutsAndPastes)
{
    for (const char *name : {"a.img", "b.img", "c.img"})
        add(name);
    [[[shelf_->mRows datasourceArray] objectAtIndex:0] setObject:@"a note" forKey:kNote];
    select({0});
    [shelf_->mRows cut:nil];
    EXPECT_EQ(names(), "bc");
    EXPECT_EQ(runProgram({"sh", "-c", "timeout 5 xclip -selection clipboard -o"}).status, 0);
    select({1});
    [shelf_->mRows paste:nil];
    EXPECT_EQ(names(), "bca");
    EXPECT_EQ(cell(2, kNote), "a note");
    // Text from another program; and a pasteboard that lies.
    const std::string file = folder_.write("t.img", "");
    NSPasteboard *pasteboard = [NSPasteboard generalPasteboard];
    [pasteboard declareTypes:[NSArray arrayWithObject:NSStringPboardType] owner:nil];
    [pasteboard setString:ns("some words\nfile://" + file + "\n") forType:NSStringPboardType];
    [shelf_->mRows paste:nil];
    EXPECT_EQ(names(), "bcat");
    [pasteboard declareTypes:[NSArray arrayWithObjects:@"TarvikShelfRows", NSFilenamesPboardType, nil]
                       owner:nil];
    [pasteboard setData:tarvik::nsdata("\x01\x02 no list") forType:@"TarvikShelfRows"];
    [pasteboard setPropertyList:@"no list" forType:NSFilenamesPboardType];
    [shelf_->mRows paste:nil];
    EXPECT_EQ(names(), "bcat");
}

TEST_F(ShelfApplication, SortsAndLabels)
{
    add("b.img");
    folder_.write("a.img", std::string(5000, 'x'));
    [shelf_ addPaths:[NSArray arrayWithObject:ns(folder_ / "a.img")] atIndex:1000];
    select({0});
    [shelf_ setSortKey:kSize];
    EXPECT_EQ(names(), "ba");
    [shelf_ setSortKey:kSize];
    EXPECT_EQ(names(), "ab");
    EXPECT_EQ([shelf_->mWindow->mTable selectedRow], 1);  // the same image is selected
    [shelf_ setImageLabel:[shelf_->mLabels itemWithTag:3]];
    EXPECT_EQ(cell(1, kLabel), "3");
    EXPECT_EQ([ns(folder_ / "b.img") labelColorIndex], 3u);
    EXPECT_TRUE([shelf_ validateMenuItem:[shelf_->mLabels itemWithTag:3]]);
    EXPECT_TRUE([(NSMenuItem *)[shelf_->mLabels itemWithTag:3] checked]);
}

TEST_F(ShelfApplication, VerifiesInTheBackground)
{
    const std::string file = add("a.img");
    select({0});
    [shelf_ verifyImages:nil];
    EXPECT_EQ([shelf_->mJobs count], 1u);
    ASSERT_TRUE(idle());
    EXPECT_EQ(cell(0, kChecksum), "✓ " + runProgram({"sha1sum", file}).out.substr(0, 40));
    EXPECT_TRUE([shelf_->mWindow->mProgress isHidden]);
}

TEST_F(ShelfApplication, MountsAndUnmounts)
{
    if (geteuid() != 0 && access("/dev/fuse", R_OK | W_OK) != 0)
        GTEST_SKIP() << "this user may use neither loop devices nor FUSE";
    std::filesystem::create_directory(folder_ / "source");
    folder_.write("source/file", "text");
    const std::string image = folder_ / ("shelf-" + std::to_string(getpid()) + ".img");
    [shelf_ makeImage:ns(image) ofFolder:ns(folder_ / "source")];
    ASSERT_TRUE(idle());
    ASSERT_EQ([[shelf_->mRows datasourceArray] count], 1u);
    select({0});
    EXPECT_TRUE([shelf_ validateAction:@selector(mountImages:)]);
    EXPECT_FALSE([shelf_ validateAction:@selector(unmountImages:)]);
    [shelf_ mountImages:nil];
    ASSERT_TRUE(idle());
    const std::string point = cell(0, kMounted);
    EXPECT_EQ(readFile(point + "/file"), "text");
    EXPECT_FALSE([shelf_ validateAction:@selector(mountImages:)]);
    [shelf_ unmountImages:nil];
    ASSERT_TRUE(idle());
    EXPECT_EQ(cell(0, kMounted), "");
    EXPECT_FALSE(std::filesystem::exists(point));
    EXPECT_EQ(childProcesses(), 0u);
}

TEST_F(ShelfApplication, ExportsAndReadsBack)
{
    for (const char *name : {"a.img", "b.img"})
        add(name);
    const std::string xml = folder_ / "out.xml";
    [shelf_ exportTo:ns(xml)];
    select({0, 1});
    [shelf_->mRows delete:nil];
    [shelf_ addPaths:[NSArray arrayWithObject:ns(xml)] atIndex:0];
    EXPECT_EQ(names(), "ab");
    [[[shelf_->mRows datasourceArray] objectAtIndex:1] setObject:@"Of 2024" forKey:kNote];
    EXPECT_EQ(str([shelf_ notesText]), "b\n" + (folder_ / "b.img").native() + "\nOf 2024\n\n");
}

TEST_F(ShelfApplication, SaysWhatToDo)
{
    const std::string file = add("damaged.img");
    select({0});
    [shelf_ mountImages:nil];
    ASSERT_TRUE(idle());
    NSWindow *alert = nil;
    ASSERT_TRUE(eventually([&] { return (alert = [shelf_->mWindow attachedSheet]) != nil; }));
    std::string said;
    for (NSUInteger i = 0; i < [[[alert contentView] subviews] count]; ++i) {
        id view = [[[alert contentView] subviews] objectAtIndex:i];
        if ([view respondsToSelector:@selector(stringValue)])
            said += str([view stringValue]);
    }
    EXPECT_NE(said.find("not a disk image"), std::string::npos) << said;
    EXPECT_NE(said.find("Verify compares"), std::string::npos);
    [shelf_ verifyImages:nil];  // the work goes on below it
    ASSERT_TRUE(idle());
    EXPECT_EQ(cell(0, kChecksum), "✓ " + runProgram({"sha1sum", file}).out.substr(0, 40));
    [alert closeSheetWithReturnCode:NSAlertDefaultReturn];
    EXPECT_TRUE(eventually([&] { return [shelf_->mWindow attachedSheet] == nil; }));
}

TEST_F(ShelfApplication, LivesWithForeignRows)
{
    close();
    NSArray *odd = [NSArray
        arrayWithObjects:@"a text", [NSArray array],
                         [NSDictionary dictionaryWithObject:[NSNumber numberWithInt:1] forKey:kPath], nil];
    [[NSUserDefaults standardUserDefaults] setObject:odd forKey:kImagesDefault];
    open();
    add("a.img");
    EXPECT_EQ(cell(0, kPath) + cell(1, kSize) + cell(2, kPath), "");
    [shelf_->mWindow display];
    [shelf_ setSortKey:kPath];
    [shelf_->mWindow->mTable selectAll:nil];
    for (SEL action : {
             @selector(mountImages:), @selector(verifyImages:), @selector(setImageLabel:),
                 @selector(exportCatalogue:)
         })
        [shelf_ validateAction:action];
    close();
    EXPECT_EQ([[[NSUserDefaults standardUserDefaults] arrayForKey:kImagesDefault] count], 4u);  // kept
    open();
}

}  // namespace
