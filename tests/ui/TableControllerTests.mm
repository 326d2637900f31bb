#include <Carbon/Gestalt.h>

#import "tests/ui/TableFixture.h"

#import <Tarvik/support/Pool.h>
#import <Tarvik/support/Retained.h>

#include <tests/support/LoggedMessages.h>
#include <tests/support/Program.h>
#include <tests/support/TemporaryFolder.h>

#include <fstream>
#include <thread>
#include <vector>

namespace {

std::string text(id object) { return tarvik::utf8([object description]).value_or("nil"); }

NSData *list(std::vector<uint32_t> rows) { return [NSData dataWithBytes:rows.data() length:rows.size() * 4]; }

TEST(TableView, MayHaveNoColumns)
{
    tarvik::Pool pool;
    [NSApplication sharedApplication];
    NSTableView *bare = [[[NSTableView alloc] initWithFrame:NSMakeRect(0, 0, 100, 100)] autorelease];
    [bare selectRow:1 asExtending:NO andEdit:YES];
    EXPECT_EQ([bare numberOfRows], 0);
    const auto controller = tarvik::adopt<TableController>([[TableController alloc] initWithTableView:bare
                                                                                       userDefaultKey:nil]);
    [controller.get() setTableView:nil];
    [controller.get() setTableView:bare];
    [controller.get() loadDatasource];
    EXPECT_EQ([bare numberOfRows], 0);
}

TEST_F(TableTest, NewRowsGoBehindTheSelectedOneOrToTheTop)
{
    const struct {
        const char *before, *after;
        int32_t index;
    } cases[] = {{"abc", "XYabc", 0},
                 {"aBcde", "abXYcde", 2},
                 {"abC", "abcXY", 3},
                 {"AbCd", "abcXYd", 3},
                 {"", "XY", 0}};
    for (const auto &each : cases) {
        rows(each.before);
        EXPECT_EQ([controller_ insertIndexToAdd], each.index) << each.before;
        [controller_ addDatasourceArray:made("xy")];
        EXPECT_EQ(rows(), each.after) << each.before;
        EXPECT_TRUE(marked());
    }
    for (const auto &[index, after] : {std::pair{-5, "XYabc"}, {1, "aXYbc"}, {99, "abcXY"}}) {
        rows("aBc");
        [controller_ insertDatasourceArray:made("xy") atIndex:index];
        EXPECT_EQ(rows(), after);
    }
    rows("abC");
    EXPECT_EQ([controller_ insertIndexToReplace], 2);
    [controller_ insertDatasourceArray:nil atIndex:0];
    EXPECT_EQ(rows(), "abC");
    EXPECT_FALSE(marked());
    [table_ setAllowsMultipleSelection:NO];
    [controller_ insertDatasourceArray:made("xy") atIndex:0];
    EXPECT_EQ(rows(), "xYabc");
    [controller_ setDatasourceArray:[controller_ datasourceArray]];
    EXPECT_EQ(rows(), "xyabC");
    TableController *alone = [[[TableController alloc] init] autorelease];
    [alone addDatasourceArray:made("x")];
    [alone addDatasourceArray:made("y")];
    EXPECT_EQ([[alone datasourceArray] count], 2u);
    EXPECT_EQ([alone insertIndexToAdd], 0);
}

TEST_F(TableTest, ManyInsertedRowsAreSelectedAtOnceAndScrolledTo)
{
    rows("a");
    delegate_->mSelectionChanges = 0;
    [controller_ insertDatasourceArray:made(std::string(500, 'x')) atIndex:1];
    EXPECT_EQ([table_ numberOfSelectedRows], 500);
    EXPECT_LE(delegate_->mSelectionChanges, 2);
    EXPECT_TRUE(NSLocationInRange(500, [table_ rowsInRect:[table_ visibleRect]]));
}

TEST_F(TableTest, ANewRowIsSelectedAndOpenForEditing)
{
    delegate_->mCan = {"tableController:makeInitialRowForIndex:"};
    rows("aBc");
    [controller_ addNewRow:nil];
    EXPECT_EQ(rows(), "ab2c");
    EXPECT_EQ([table_ selectedRow], 2);
    EXPECT_EQ([table_ editedRow], 2);
    EXPECT_FALSE(marked());
    // What is being typed stays where it was typed, wherever rows come and go.
    [[table_ currentEditor] setString:@"typed"];
    [controller_ insertDatasourceArray:made("xyz") atIndex:0];
    EXPECT_EQ(rows(), "XYZabtc");
    EXPECT_TRUE(marked());
}

TEST_F(TableTest, ShowsCells)
{
    rows("ab");
    const auto cell = [&](id table, NSInteger row) {
        return text([controller_ tableView:table objectValueForTableColumn:column_ row:row]);
    };
    EXPECT_EQ(cell(table_, 1), "b");
    EXPECT_EQ(cell(table_, 2), "");
    EXPECT_EQ(cell(table_, -1), "");
    EXPECT_EQ(cell(nil, 1), "");
    EXPECT_EQ([controller_ numberOfRowsInTableView:nil], 0);
    delegate_->mCan = {"tableController:convertVisibleValue:forColumnIdentifier:row:"};
    delegate_->mShow = [](id value) -> id {
        return [value isEqual:@"a"] ? [@"<" stringByAppendingString:value] : nil;
    };
    EXPECT_EQ(cell(table_, 0), "<a");
    EXPECT_EQ(cell(table_, 1), "");
    EXPECT_EQ([controller_ datasourceOfColumn:@"name" visibleValue:YES], nil);  // not a shorter array
    EXPECT_EQ([[controller_ datasourceOfColumn:@"name" visibleValue:NO] count], 2u);
}

TEST_F(TableTest, TakesEdits)
{
    const auto edit = [&](id value) {
        [controller_ tableView:table_ setObjectValue:value forTableColumn:column_ row:1];
        return marked();
    };
    rows("abc");
    EXPECT_TRUE(edit(@"x"));
    EXPECT_FALSE(edit([NSMutableString stringWithString:@"x"]));
    EXPECT_FALSE(edit(nil));
    [column_ setEditable:NO];
    EXPECT_FALSE(edit(@"y"));
    [column_ setEditable:YES];
    EXPECT_EQ(rows(), "axc");
    delegate_->mCan = {"tableController:convertSetEditedValue:forColumnIdentifier:row:"};
    delegate_->mStore = [](id value) -> id {
        return [value isEqual:@"gone"] ? nil : [value lowercaseString];
    };
    EXPECT_TRUE(edit(@"Z"));
    EXPECT_EQ(rows(), "azc");
    EXPECT_FALSE(edit(@"gone"));
    EXPECT_EQ(rows(), "ac");
    [[controller_ datasourceArray] replaceObjectAtIndex:0
                                             withObject:[NSDictionary dictionaryWithObject:@"k"
                                                                                    forKey:@"key"]];
    EXPECT_TRUE([controller_ replaceValue:@"q"
                                    ofRow:0
                                 ofColumn:@"name"
                             visibleValue:NO]);  // of a row that was not mutable
    EXPECT_EQ(rows(), "qc");
}

TEST_F(TableTest, ReplacesTheSelection)
{
    // The last cases: rows written over the surplus just added, and what is left selected behind removed.
    const struct {
        const char *before, *given, *after, *afterByColumn;
    } cases[] = {
        {"aBcDe", "xy", "aXcYe", "aXcYe"}, {"aBCDe", "x", "aXe", "aXe"},     {"aBC", "", "a", "a"},
        {"abC", "xyz", "abXZ", "abX"},     {"abc", "xy", "XYYabc", "XYabc"}, {"Abc", "xy", "XYbc", "XYbc"}};
    for (const auto &each : cases) {
        rows(each.before);
        [controller_ replaceSelectionWithDatasourceArray:made(each.given)];
        EXPECT_EQ(rows(), each.after) << each.before;
        EXPECT_TRUE(marked());
        rows(each.before);
        EXPECT_TRUE([controller_ replaceSelectionWithDatasourceArray:values(each.given)
                                                            ofColumn:@"name"
                                                        visibleValue:NO]);
        EXPECT_EQ(rows(), each.afterByColumn) << each.before;
        EXPECT_TRUE(marked());
    }
    rows("aBC");
    EXPECT_FALSE([controller_ replaceSelectionWithDatasourceArray:nil ofColumn:@"name" visibleValue:NO]);
    EXPECT_EQ(rows(), "aBC");
    EXPECT_TRUE(marked());
    [controller_ replaceSelectionWithDatasourceArray:nil];
    EXPECT_EQ(rows(), "a");
    // A value that the delegate refuses ends it.
    delegate_->mCan = {"tableController:convertSetEditedValue:forColumnIdentifier:row:"};
    delegate_->mStore = [](id value) -> id { return [value isEqual:@"y"] ? nil : value; };
    rows("aBCDe");
    EXPECT_FALSE([controller_ replaceSelectionWithDatasourceArray:values("xyz")
                                                         ofColumn:@"name"
                                                     visibleValue:YES]);
    EXPECT_EQ(rows(), "aXCDe");
    EXPECT_TRUE(marked());
    // It is given the position among the values, and those that it refuses are left out.
    rows("a");
    delegate_->mCallOrder = "";
    EXPECT_TRUE([controller_ insertDatasourceArray:values("xyz")
                                          ofColumn:@"name"
                                      visibleValue:YES
                                           atIndex:7]);
    EXPECT_EQ(rows(), "aXZ");
    EXPECT_EQ(delegate_->mCallOrder, "012");
}

TEST_F(TableTest, LogsWhatIsRaisedAndFinishes)
{
    LoggedMessages logged;
    delegate_->mCan = {"tableController:convertSetEditedValue:forColumnIdentifier:row:"};
    delegate_->mStore = [](id) -> id { return [NSException raise:@"Wrong" format:@"on purpose"], nil; };
    rows("aBc");
    EXPECT_FALSE([controller_ replaceSelectionWithDatasourceArray:values("x")
                                                         ofColumn:@"name"
                                                     visibleValue:YES]);
    EXPECT_FALSE([controller_ insertDatasourceArray:values("x") ofColumn:@"name" visibleValue:YES atIndex:0]);
    [controller_ moveRows:list({0, 9}) to:1];
    EXPECT_TRUE(marked());
    ASSERT_EQ(logged.count(), 3u);
    EXPECT_TRUE(logged[0].starts_with(
        "-[TableController replaceSelectionWithDatasourceArray:ofColumn:visibleValue:]:"));
    EXPECT_TRUE(logged[0].ends_with("unexpected exception: name[Wrong] reason[on purpose]")) << logged[0];
    EXPECT_TRUE(
        logged[1].starts_with("-[TableController insertDatasourceArray:ofColumn:visibleValue:atIndex:]:"));
    EXPECT_EQ(rows(), "abc");
}

TEST_F(TableTest, MovesRows)
{
    const struct {
        std::vector<uint32_t> rows;
        int32_t to;
        const char *after;
    } cases[] = {{{0, 1}, 4, "cdABe"},
                 {{2, 4}, 0, "CEabd"},
                 {{0}, 5, "bcdeA"},
                 {{0, 1}, -1, "cdebA"},
                 {{}, 1, "abcde"}};
    for (const auto &each : cases) {
        rows("abCde");
        [controller_ moveRows:each.rows.empty() ? nil : list(each.rows) to:each.to];
        EXPECT_EQ(rows(), each.after);
        EXPECT_TRUE(marked());
    }
    // What a pasteboard says is a list of rows.
    rows("Abc");
    [controller_ moveRows:[NSData dataWithBytes:"\1\0\0" length:3] to:0];
    [controller_ moveRows:list({7, 0xFFFFFFFF}) to:0];
    EXPECT_EQ(rows(), "abc");
    rows("aBcD");
    EXPECT_TRUE([[controller_ selectedRowArray] isEqual:list({1, 3})]);
    EXPECT_EQ([[controller_ selectedDatasourceArray] objectAtIndex:1],
              [[controller_ datasourceArray] objectAtIndex:3]);
    EXPECT_EQ(text([[controller_ selectedDatasourceOfColumn:@"name"
                                               visibleValue:NO] componentsJoinedByString:@""]),
              "bd");
    [controller_ emptyDatasourceArray];
    EXPECT_TRUE(marked());
    [controller_ emptyDatasourceArray];
    EXPECT_FALSE(marked());
}

TEST_F(TableTest, SortsAndEnumerates)
{
    rows("CaDB");
    [controller_ sortAll:nil];
    EXPECT_EQ(rows(), "CaDB");
    delegate_->mCan = {"tableController:compareRows:with:", "tableController:enumerateRows:",
                       "tableController:enumerateSelectedRows:"};
    [controller_ sortSelection:nil];
    EXPECT_EQ(rows(), "BaCD");
    [controller_ sortAll:nil];
    EXPECT_EQ(rows(), "AbCD");
    EXPECT_TRUE(marked());
    rows("aBc");
    [controller_ enumerateRows];
    EXPECT_EQ(std::exchange(delegate_->mEnumerated, 0), 2);
    [controller_ enumerateSelectedRows];
    EXPECT_EQ(delegate_->mEnumerated, 3);  // each row, not each selected row
}

TEST_F(TableTest, AnswersWhatTheMenuCanDo)
{
    const struct {
        const char *rows;
        std::set<std::string> can;
        std::set<std::string> enabled;
    } cases[] = {
        {"aB", {"tableController:copy:"}, {"cut:", "copy:", "sortSelection:"}},
        {"ab", {"tableController:copy:", "tableController:delete:"}, {}},
        {"aB", {"tableController:delete:"}, {"delete:", "sortSelection:"}},
        {"ab", {"tableController:paste:"}, {"paste:"}},
        {"ab",
         {"tableView:writeRows:toPasteboard:", "tableView:acceptDrop:row:dropOperation:"},
         {"tableView:acceptDrop:row:dropOperation:"}},
        {"ab",
         {"tableView:writeRowsWithIndexes:toPasteboard:"},
         {"tableView:writeRowsWithIndexes:toPasteboard:"}},
    };
    const char *const asked[] = {"delete:",
                                 "cut:",
                                 "copy:",
                                 "paste:",
                                 "sortSelection:",
                                 "tableView:writeRows:toPasteboard:",
                                 "tableView:writeRowsWithIndexes:toPasteboard:",
                                 "tableView:acceptDrop:row:dropOperation:",
                                 "tableView:validateDrop:proposedRow:proposedDropOperation:"};
    for (const auto &each : cases) {
        rows(each.rows);
        delegate_->mCan = each.can;
        for (const char *name : asked)
            EXPECT_EQ(bool([controller_ respondsToSelector:sel_registerName(name)]),
                      each.enabled.count(name) > 0)
                << name;
        EXPECT_TRUE([controller_ respondsToSelector:@selector(sortAll:)]);
        EXPECT_TRUE([controller_ respondsToSelector:@selector(addNewRow:)]);
        EXPECT_FALSE([controller_ respondsToSelector:@selector(cutt:)]);
    }
    EXPECT_FALSE([controller_ respondsToSelector:(SEL)0]);
    [controller_ setDelegate:nil];
    EXPECT_TRUE([controller_ respondsToSelector:@selector(tableView:writeRows:toPasteboard:)]);
    EXPECT_FALSE([controller_ respondsToSelector:@selector(paste:)]);
}

TEST_F(TableTest, TheMenusActionsReachItThroughTheChain)
{
    EXPECT_EQ([table_ nextResponder], controller_);
    NSResponder *const behind = [controller_ nextResponder];
    [controller_ connectViewToModel];
    EXPECT_EQ([controller_ nextResponder], behind);
    const auto send = [](SEL action) { return bool([NSApp sendAction:action to:nil from:nil]); };
    ASSERT_TRUE(comesToFront());
    rows("aBcD");
    EXPECT_FALSE(send(@selector(delete:)));
    delegate_->mCan = {"tableController:copy:", "tableController:delete:", "tableController:paste:"};
    delegate_->mPasted = made("xy");
    EXPECT_TRUE(send(@selector(cut:)));
    EXPECT_EQ(rows(), "ac");
    EXPECT_EQ(delegate_->mCopies, 1);
    EXPECT_EQ(delegate_->mDeletes, 1);
    EXPECT_TRUE(marked());
    [table_ selectRow:0 byExtendingSelection:NO];
    EXPECT_TRUE(send(@selector(paste:)));
    EXPECT_EQ(rows(), "aXYc");
    EXPECT_TRUE(send(@selector(deleteBackward:)));
    EXPECT_EQ(rows(), "ac");
    [controller_ setTableView:nil];
    EXPECT_EQ([table_ nextResponder], behind);
    EXPECT_EQ([table_ dataSource], nil);
}

TEST_F(TableTest, KeepsItsRowsInTheUserDefaults)
{
    NSUserDefaults *defaults = [NSUserDefaults standardUserDefaults];
    [defaults
        setObject:[NSArray arrayWithObjects:[made("a") lastObject], @"no row", [made("b") lastObject], nil]
           forKey:@"Rows"];
    TableController *kept = [[TableController alloc] initWithTableView:table_ userDefaultKey:@"Rows"];
    EXPECT_EQ([table_ numberOfRows], 3);
    EXPECT_EQ(text([kept tableView:table_ objectValueForTableColumn:column_ row:1]), "");
    EXPECT_FALSE([kept replaceValue:@"x" ofRow:1 ofColumn:@"name" visibleValue:NO]);
    delegate_->mCan = {"tableController:compareRows:with:"};
    [kept setDelegate:delegate_];
    [kept sortAll:nil];
    EXPECT_TRUE([kept replaceValue:@"z" ofRow:0 ofColumn:@"name" visibleValue:NO]);
    EXPECT_EQ(text([[[defaults arrayForKey:@"Rows"] objectAtIndex:0] objectForKey:@"name"]), "a");
    [kept storeDatasource:nil];
    EXPECT_TRUE([kept replaceValue:@"later" ofRow:0 ofColumn:@"name" visibleValue:NO]);
    EXPECT_EQ(text([[[defaults arrayForKey:@"Rows"] objectAtIndex:0] objectForKey:@"name"]), "z");
    [kept setUserDefaultKey:@"Other" andLoad:NO];
    [kept release];
    NSArray *stored = [defaults arrayForKey:@"Other"];
    ASSERT_EQ([stored count], 3u);
    EXPECT_EQ(text([[stored objectAtIndex:0] objectForKey:@"name"]), "later");
    EXPECT_EQ(text([stored objectAtIndex:2]), "no row");
    // What can't be stored leaves what was.
    LoggedMessages logged;
    kept = [[TableController alloc] initWithTableView:nil userDefaultKey:@"Other"];
    [kept addDatasourceArray:[NSArray arrayWithObject:[NSMutableDictionary dictionaryWithObject:[NSNull null]
                                                                                         forKey:@"name"]]];
    [kept release];
    EXPECT_EQ(logged.count(), 1u);
    EXPECT_EQ([[defaults arrayForKey:@"Other"] count], 3u);
    rows("a");
    [controller_ setUserDefaultKey:@"Rows" andLoad:YES];
    EXPECT_TRUE(marked());
}

TEST_F(TableTest, RowsAreDraggedWithTheMouse)
{
    delegate_->mCan = {"tableView:writeRowsWithIndexes:toPasteboard:",
                       "tableView:validateDrop:proposedRow:proposedDropOperation:",
                       "tableView:acceptDrop:row:dropOperation:"};
    rows("Abcde");
    [table_ setVerticalMotionCanBeginDrag:YES];
    [controller_ setDropTargetForTypes:[NSArray arrayWithObject:@"test.rows"]];
    ASSERT_TRUE(comesToFront());
    const auto at = [&](NSInteger row, double part) {
        const NSRect rect = [table_ rectOfRow:row];
        const NSPoint point = [window_
            convertBaseToScreen:[table_ convertPoint:NSMakePoint(20, NSMinY(rect) + part * NSHeight(rect))
                                              toView:nil]];
        return std::vector<std::string>{"mousemove", std::to_string(int(point.x)),
                                        std::to_string(int(NSMaxY([[NSScreen mainScreen] frame]) - point.y)),
                                        "sleep", "0.1"};
    };
    std::vector<std::string> command{"xdotool"};
    const auto then = [&](const std::vector<std::string> &more) {
        command.insert(command.end(), more.begin(), more.end());
    };
    then(at(0, 0.5));
    then({"mousedown", "1", "sleep", "0.1"});
    then(at(1, 0.5));
    then(at(2, 0.5));
    then(at(3, 0.1));
    then({"mouseup", "1"});
    std::thread mouse([&] { runProgram(command); });
    EXPECT_TRUE(turnUntil([&] { return rows() != "Abcde"; }));
    mouse.join();
    EXPECT_EQ(rows(), "bcAde");
}

TEST_F(TableTest, AnEditIsTypedAndStored)
{
    rows("ab");
    ASSERT_TRUE(comesToFront());
    [controller_ addNewRow:nil];
    EXPECT_EQ([table_ editedRow], 0);
    std::thread keys([] { runProgram({"xdotool", "sleep", "0.1", "type", "q"}); });
    EXPECT_TRUE(turnUntil([&] { return text([[table_ currentEditor] string]) == "q"; }));
    keys.join();
    EXPECT_FALSE(marked());
    std::thread enter([] { runProgram({"xdotool", "key", "Return"}); });
    EXPECT_TRUE(
        turnUntil([&] { return [[controller_ datasourceOfColumn:@"name" visibleValue:NO] count] == 3; }));
    enter.join();
    EXPECT_TRUE(marked());
    EXPECT_EQ(text([[controller_ datasourceOfColumn:@"name" visibleValue:NO] objectAtIndex:0]), "q");
}

TEST_F(TableTest, AnOpenEditEndsWithItsRow)
{
    [table_ setAllowsEmptySelection:NO];
    [controller_ setUserDefaultKey:@"Edited" andLoad:NO];
    const auto afterAnEdit = [&](auto change) {
        rows("Ab");
        [controller_ storeDatasource:nil];
        [table_ editColumn:0 row:0 withEvent:nil select:YES];
        [[table_ currentEditor] setString:@"q"];
        change();
        [window_ makeFirstResponder:table_];
        return rows();
    };
    EXPECT_EQ(afterAnEdit([&] { [controller_ setDatasourceArray:made("xy")]; }), "XY");
    EXPECT_EQ(afterAnEdit([&] { [controller_ insertDatasourceArray:made("xy") atIndex:0]; }), "XYqb");
    EXPECT_EQ(afterAnEdit([&] { [controller_ moveRows:list({0}) to:2]; }), "BQ");
    EXPECT_EQ(afterAnEdit([&] { [controller_ loadDatasource]; }), "Ab");
}

TEST(TableWithoutAWindow, OnOldSystemsDragsRowNumbers)
{
    const auto old = [](OSType, SInt32 *response) -> OSErr { return *response = 0x1039, noErr; };
    ASSERT_EQ(ReplaceGestalt(gestaltSystemVersion, old, nullptr), noErr);
    [NSApplication sharedApplication];
    TableView *table = [[[TableView alloc] initWithFrame:NSMakeRect(0, 0, 100, 100)] autorelease];
    EXPECT_EQ([table draggingSourceOperationMaskForLocal:YES], NSDragOperation(0xFFFFFFFF));
    [table addTableColumn:[[[NSTableColumn alloc] initWithIdentifier:@"name"] autorelease]];
    TableController *controller = [[[TableController alloc] initWithTableView:table] autorelease];
    TableDelegate *delegate = [[[TableDelegate alloc] init] autorelease];
    delegate->mCan = {"tableView:writeRows:toPasteboard:", "tableView:writeRowsWithIndexes:toPasteboard:"};
    [controller setDelegate:delegate];
    EXPECT_TRUE([controller respondsToSelector:@selector(tableView:writeRows:toPasteboard:)]);
    EXPECT_FALSE([controller respondsToSelector:@selector(tableView:writeRowsWithIndexes:toPasteboard:)]);
}

/// The leak checker knows it by its name: gnustep-gui's loader keeps objects of its own.
bool loadInterfaceFile(const std::filesystem::path &file, NSDictionary *names)
{
    return [NSBundle loadNibFile:tarvik::nsstring(file.native()) externalNameTable:names withZone:NULL];
}

TEST(TableWithoutAWindow, IsWiredByAnInterfaceFile)
{
    [NSApplication sharedApplication];
    TemporaryFolder folder;
    std::ofstream(folder / "Table.xib") << R"(<?xml version="1.0" encoding="UTF-8"?>
<document type="com.apple.InterfaceBuilder3.Cocoa.XIB" version="3.0" toolsVersion="10117" targetRuntime="MacOSX.Cocoa">
 <objects>
  <customObject id="-2" userLabel="File's Owner" customClass="NSObject"/>
  <customObject id="-1" userLabel="First Responder" customClass="FirstResponder"/>
  <customObject id="-3" userLabel="Application" customClass="NSObject"/>
  <customView id="v1"><rect key="frame" x="0.0" y="0.0" width="200" height="100"/></customView>
  <tableView id="t1"><rect key="frame" x="0.0" y="0.0" width="200" height="100"/>
   <tableColumns><tableColumn identifier="name" width="100" id="c1"><textFieldCell key="dataCell" id="d1">
    <font key="font" metaFont="system" size="12"/></textFieldCell></tableColumn></tableColumns></tableView>
  <customObject id="k1" customClass="TableController"><connections>
    <outlet property="vTableView" destination="t1" id="o1"/>
    <outlet property="vPreviousResponder" destination="v1" id="o2"/></connections></customObject>
 </objects></document>)";
    NSMutableArray *made = [NSMutableArray array];
    NSDictionary *names = [NSDictionary dictionaryWithObjectsAndKeys:[[NSObject new] autorelease], NSNibOwner,
                                                                     made, NSNibTopLevelObjects, nil];
    ASSERT_TRUE(loadInterfaceFile(folder / "Table.xib", names));
    TableController *controller = nil;
    NSView *view = nil;
    for (id object : tarvik::each<>(made)) {
        if ([object isKindOfClass:[TableController class]])
            controller = object;
        else if ([object isMemberOfClass:[NSView class]])
            view = object;
    }
    ASSERT_NE(controller, nil);
    ASSERT_NE([controller tableView], nil);
    EXPECT_EQ((id)[[controller tableView] dataSource], controller);
    EXPECT_EQ([view nextResponder], controller);
    EXPECT_EQ([[controller datasourceArray] count], 0u);
}

}  // namespace
