// What a person does with Shelf: keys, clicks and drags of the display's own, answered panels, other programs' clipboards and servers.
#include <apps/Shelf/CatalogueXML.h>
#include <tests/shelf/ShelfFixture.h>
#include <tests/support/LocalServer.h>
#include <tests/support/Program.h>

#include <fcntl.h>
#include <unistd.h>

namespace {

using namespace shelf;

class Driven : public ShelfApplication {
protected:
    /// The name field of a file panel.
    static NSForm *nameField(NSWindow *panel)
    {
        return (NSForm *)find([panel contentView],
                              [](NSView *view) { return [view isKindOfClass:[NSForm class]]; });
    }
    /// Types a name into the file panel that is there, and chooses it.
    void answer(const std::string &name)
    {
        NSWindow *panel = sheet();
        ASSERT_TRUE([panel isKindOfClass:[NSSavePanel class]]);
        NSForm *field = nameField(panel);
        const auto shows = [&] {
            return [field currentEditor] && [[[field currentEditor] string] isEqual:ns(name)];
        };
        ASSERT_TRUE(drive("type --delay 30 " + name, shows)) << str([[field currentEditor] string]);
        ASSERT_TRUE(drive("key Return", [&] { return [shelf_->mWindow attachedSheet] != panel; }));
    }
    /// Clicks an item of the file panel's list, and OK.
    void pick(const std::string &name)
    {
        NSWindow *panel = sheet();
        const auto isBrowser = [](NSView *view) { return [view isKindOfClass:[NSBrowser class]]; };
        NSBrowser *browser = (NSBrowser *)find([panel contentView], isBrowser);
        NSMatrix *list = [browser matrixInColumn:[browser lastColumn]];
        NSInteger row = [list numberOfRows] - 1;
        while (row >= 0 && ![[[list cellAtRow:row column:0] stringValue] isEqual:ns(name)])
            --row;
        ASSERT_GE(row, 0);
        const NSRect item = [list cellFrameAtRow:row column:0];
        const auto isChosen = [&] {
            return [[[nameField(panel) cellAtIndex:0] stringValue] isEqual:ns(name)];
        };
        ASSERT_TRUE(drive(click(onScreen(list, NSMakePoint(NSMinX(item) + 30, NSMidY(item)))), isChosen));
        const auto isGone = [&] { return [shelf_->mWindow attachedSheet] != panel; };
        ASSERT_TRUE(drive(click(middleOf(buttonTitled([panel contentView], @"OK"))), isGone));
    }
    /// As a hand clicks: not faster than the display's events arrive.
    static std::string click(const std::string &place)
    {
        return "mousemove " + place + " sleep 0.1 mousedown 1 sleep 0.08 mouseup 1";
    }
    std::vector<std::string> files() const
    {
        std::vector<std::string> found;
        for (const auto &each : std::filesystem::directory_iterator(folder_.path()))
            found.push_back(each.path().filename());
        std::sort(found.begin(), found.end());
        return found;
    }
    /// Where file panels begin.
    void beginIn(const std::string &folder)
    {
        [[NSUserDefaults standardUserDefaults] setObject:ns(folder) forKey:@"NSDefaultOpenDirectory"];
        ASSERT_EQ(chdir(folder.c_str()), 0);
    }
};

TEST_F(Driven, AddsImagesThroughThePanel)
{
    folder_.write("a.img", "a");
    folder_.write("b.img", "b");
    beginIn(folder_.path());
    ASSERT_TRUE(toFront());
    ASSERT_TRUE(drive("key ctrl+o", [&] { return [shelf_->mWindow attachedSheet] != nil; }));
    EXPECT_FALSE([shelf_ validateMenuItem:(id)[[NSApp mainMenu] itemWithTag:0]]);  // first the answer
    EXPECT_TRUE(eventually([&] { return isWhole([shelf_->mWindow attachedSheet]); }));
    answer("b.img");
    EXPECT_TRUE(eventually([&] { return names() == "b"; }));
    // The same panel again, as large as before; cancelled, it adds nothing.
    ASSERT_TRUE(toFront());
    ASSERT_TRUE(drive("key ctrl+o", [&] { return [shelf_->mWindow attachedSheet] != nil; }));
    EXPECT_TRUE(eventually([&] { return isWhole([shelf_->mWindow attachedSheet]); }));
    ASSERT_TRUE(drive("key Escape", [&] { return [shelf_->mWindow attachedSheet] == nil; }));
    EXPECT_EQ(names(), "b");
}

TEST_F(Driven, MakesAnImageOfAFolder)
{
    std::filesystem::create_directories(folder_ / "Letters");
    folder_.write("Letters/one", std::string(100000, 'x'));
    beginIn(folder_.path());
    ASSERT_TRUE(toFront());
    ASSERT_TRUE(drive("key ctrl+n", [&] { return [shelf_->mWindow attachedSheet] != nil; }));
    pick("Letters");
    ASSERT_TRUE(
        eventually([&] { return [[shelf_->mWindow attachedSheet] isMemberOfClass:[NSSavePanel class]]; }));
    EXPECT_EQ(str([[nameField(sheet()) cellAtIndex:0] stringValue]), "Letters.img");
    answer("Mail.img");
    ASSERT_TRUE(idle());
    EXPECT_EQ(names(), "Mail");
    EXPECT_EQ(files(), (std::vector<std::string>{"Letters", "Mail.img"}));
    EXPECT_TRUE(runProgram({"unsquashfs", "-cat", folder_ / "Mail.img", "one"}).out ==
                std::string(100000, 'x'));
}

TEST_F(Driven, ACancelledImageLeavesNothingBehind)
{
    std::filesystem::create_directories(folder_ / "Noise");
    // Cancelled at once or in its midst; whether it was, before the packer was through.
    const auto isCancelled = [&](size_t size, bool atOnce) {
        folder_.write("Noise/noise", runProgram({"head", "-c", std::to_string(size), "/dev/urandom"}).out);
        [shelf_ makeImage:ns(folder_ / "n.img") ofFolder:ns(folder_ / "Noise")];
        EXPECT_FALSE([shelf_->mWindow->mProgress isHidden]);
        EXPECT_TRUE(atOnce || eventually([&] {
                        return shelf_->mWindow->mProgress->mFraction > 0 || [shelf_->mJobs count] == 0;
                    }));
        [shelf_->mWindow->mCancel performClick:nil];
        EXPECT_TRUE(idle());
        return names() == "";
    };
    toFront();
    for (const bool atOnce : {true, false}) {
        for (size_t size = 30'000'000; !isCancelled(size, atOnce); size *= 4) {
            ASSERT_LT(size, 1'000'000'000u);
            std::filesystem::remove(folder_ / "n.img");
            select({0});
            [shelf_->mRows delete:nil];
        }
        EXPECT_EQ(files(), (std::vector<std::string>{"Noise"}));
        EXPECT_EQ([shelf_->mWindow attachedSheet], nil);
        EXPECT_TRUE([shelf_->mWindow->mCancel isHidden]);
        EXPECT_EQ(childProcesses(), 0u);
    }
    // One that can't be made says so, and what to do.
    [shelf_ makeImage:ns(folder_ / "none/n.img") ofFolder:ns(folder_ / "Noise")];
    ASSERT_TRUE(idle());
    EXPECT_NE(texts([sheet() contentView]).find("No image was made of “Noise”"), std::string::npos);
}

TEST_F(Driven, SaysWhyItIsStillMounted)
{
    if (geteuid() != 0 && access("/dev/fuse", R_OK | W_OK) != 0)
        GTEST_SKIP() << "this user may use neither loop devices nor FUSE";
    std::filesystem::create_directory(folder_ / "source");
    folder_.write("source/file", "text");
    [shelf_ makeImage:ns(folder_ / ("busy-" + std::to_string(getpid()) + ".img"))
             ofFolder:ns(folder_ / "source")];
    ASSERT_TRUE(idle());
    select({0});
    ASSERT_TRUE(toFront());
    ASSERT_TRUE(drive("key ctrl+m", [&] { return cell(0, kMounted) != ""; }));
    ASSERT_TRUE(idle());
    const int busy = ::open((cell(0, kMounted) + "/file").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_TRUE(drive("key ctrl+u", [&] { return [shelf_->mWindow attachedSheet] != nil; }));
    EXPECT_TRUE([shelf_->mWindow->mProgress isHidden]);
    const std::string said = texts([sheet() contentView]);
    EXPECT_NE(said.find("This is still mounted."), std::string::npos) << said;
    EXPECT_NE(said.find("unmount again"), std::string::npos) << said;
    ::close(busy);
    ASSERT_TRUE(drive("key Return", [&] { return [shelf_->mWindow attachedSheet] == nil; }));
    ASSERT_TRUE(idle());
    ASSERT_TRUE(toFront());
    EXPECT_TRUE(drive("key ctrl+u", [&] { return cell(0, kMounted) == ""; }));
}

TEST_F(Driven, PublishesToAServer)
{
    const LocalServer server;
    const std::string image = add("a.img");
    [[[shelf_->mRows datasourceArray] objectAtIndex:0] setObject:@"é & <b>" forKey:kNote];
    const auto publish = [&](const std::string &url) {
        ASSERT_TRUE(toFront());
        ASSERT_TRUE(drive("key ctrl+shift+e", [&] { return [shelf_->mWindow attachedSheet] != nil; }));
        NSWindow *panel = sheet();
        const auto shows = [&] {
            return [[panel firstResponder] isKindOfClass:[NSText class]] &&
                   [[(NSText *)[panel firstResponder] string] isEqual:ns(url)];
        };
        ASSERT_TRUE(drive("key ctrl+a sleep 0.2 type --delay 15 " + url, shows))
            << str([[panel firstResponder] description]) << texts([panel contentView]);
        ASSERT_TRUE(drive("key Return", [&] { return [shelf_->mWindow attachedSheet] != panel; }));
        ASSERT_TRUE(idle());
    };
    publish(server.url("/keep"));
    EXPECT_EQ([shelf_->mWindow attachedSheet], nil);
    EXPECT_EQ(str([shelf_->mWindow->mStatus stringValue]), "The catalogue was published.");
    const std::string kept = runProgram({"curl", "-s", server.url("/kept")}).out;
    EXPECT_TRUE(kept.starts_with("POST /keep HTTP/1.1\r\n")) << kept;
    EXPECT_NE(kept.find("Content-Type: text/xml\r\n"), std::string::npos) << kept;
    EXPECT_EQ(kept.substr(kept.find("\r\n\r\n") + 4), xmlOfRows([shelf_->mRows datasourceArray]));
    // It stays to be read whatever happens to images meanwhile, until the person goes on.
    std::filesystem::remove(image);
    [shelf_ survey];
    EXPECT_TRUE(eventually([&] { return [shelf_->mMissing count] == 1; }));
    EXPECT_EQ(str([shelf_->mWindow->mStatus stringValue]), "The catalogue was published.");
    select({});  // the row was selected when it was added
    EXPECT_EQ(str([shelf_->mWindow->mStatus stringValue]), "1 image, 0 mounted");

    for (const auto &[url, why] :
         {std::pair{server.url("/status/503"), "status 503"},
          {"http://127.0.0.1:" + std::to_string(freePort()) + "/x", "publish again"}}) {
        publish(url);
        NSWindow *alert = sheet();
        EXPECT_NE(texts([alert contentView]).find(why), std::string::npos) << texts([alert contentView]);
        ASSERT_TRUE(drive("key Return", [&] { return [shelf_->mWindow attachedSheet] == nil; }));
    }
    EXPECT_EQ(str([[NSUserDefaults standardUserDefaults] stringForKey:@"PublishAddress"]),
              server.url("/keep"));
}

TEST_F(Driven, IsAllOnTheKeyboard)
{
    for (const char *name : {"a.img", "b.img", "c.img"})
        add(name);
    select({1});
    ASSERT_TRUE(toFront());
    EXPECT_TRUE(drive("key ctrl+6", [&] { return cell(1, kLabel) == "6"; }));
    EXPECT_TRUE(drive("key Down", [&] { return [shelf_->mWindow->mTable selectedRow] == 2; }));
    EXPECT_TRUE(drive("key ctrl+k", [&] { return cell(2, kChecksum).starts_with("✓ "); }));
    EXPECT_TRUE(drive("key ctrl+a", [&] { return [shelf_->mWindow->mTable numberOfSelectedRows] == 3; }));
    EXPECT_TRUE(drive("key Delete", [&] { return names() == ""; }));
    EXPECT_TRUE(eventually([&] { return ![shelf_->mWindow->mEmpty isHidden]; }));
    EXPECT_TRUE(drive("key ctrl+z", [&] { return names() == "abc"; }));
    EXPECT_TRUE(drive("key ctrl+shift+z", [&] { return names() == ""; }));
    EXPECT_TRUE(drive("key ctrl+z", [&] { return names() == "abc"; }));
    EXPECT_EQ(cell(1, kLabel), "6");  // with all that was in it
    ASSERT_TRUE(idle());
    beginIn(folder_.path());
    ASSERT_TRUE(drive("key ctrl+e", [&] { return [shelf_->mWindow attachedSheet] != nil; }));
    answer("list.xml");
    EXPECT_EQ(
        runProgram({"xmllint", "--xpath", "count(/catalogue/image[label='Green'])", folder_ / "list.xml"})
            .out,
        "1\n");
    [shelf_ exportTo:ns(folder_ / "none/list.xml")];
    EXPECT_NE(texts([sheet() contentView]).find("could not be written"), std::string::npos);
}

TEST_F(Driven, SetsALabelFromItsButton)
{
    add("a.img");
    NSView *label = [shelf_->mWindow->mButtons lastObject];
    NSMenu *menu = shelf_->mLabels;
    ASSERT_TRUE(toFront());
    const auto isShown = [=] { return [[[menu menuRepresentation] window] isVisible]; };
    const int orange = 2;
    std::string item;
    later(0.5, [&] {  // the menu keeps the application busy until it is answered
        if (!isShown())
            return;
        NSWindow *window = [[menu menuRepresentation] window];
        const NSPoint corner = [[label window] convertBaseToScreen:[label convertPoint:NSZeroPoint
                                                                                toView:nil]];
        EXPECT_NEAR(NSMinX([window frame]), corner.x, 3);
        EXPECT_NEAR(
            NSMaxY([window frame]),
            [[label window] convertBaseToScreen:[label convertRect:[label bounds] toView:nil].origin].y, 3);
        const NSRect area = [[menu menuRepresentation] rectOfItemAtIndex:orange];
        item = onScreen([menu menuRepresentation], NSMakePoint(NSMidX(area), NSMidY(area)));
    });
    std::unique_ptr<Hand> choice;
    std::function<void()> choose = [&] {
        if (item.empty())
            return later(0.2, choose);
        choice = std::make_unique<Hand>(click(item));
    };
    later(0.8, choose);
    EXPECT_TRUE(drive(click(middleOf(label)), [&] { return cell(0, kLabel) == "2"; }));
    EXPECT_EQ([ns(folder_ / "a.img") labelColorIndex], 2u);
}

TEST_F(Driven, SharesTheClipboardWithOtherPrograms)
{
    const std::string first = add("a.img"), second = add("b c.img"), other = folder_.write("ö.img", "x");
    select({0, 1});
    ASSERT_TRUE(toFront());
    std::string copied;
    ASSERT_TRUE(drive("key ctrl+c", [&] {
        return [[[NSPasteboard generalPasteboard] types] containsObject:@"TarvikShelfRows"];
    }));
    EXPECT_EQ(runProgram({"timeout", "20", "xclip", "-selection", "clipboard", "-o"}).out,
              first + "\n" + second);
    putOnClipboard("a list:\nfile://" + folder_.path().native() + "/%C3%B6.img\n");
    EXPECT_TRUE(drive("key ctrl+v", [&] { return [[shelf_->mRows datasourceArray] count] == 3; })) << names();
    EXPECT_NE(names().find("ö"), std::string::npos);
}

TEST_F(Driven, DragsRowsToAnotherPlace)
{
    for (const char *name : {"a.img", "b.img", "c.img", "d.img"})
        add(name);
    NSTableView *table = shelf_->mWindow->mTable;
    ASSERT_TRUE(toFront());
    const auto at = [&](int row, CGFloat down) {
        return onScreen(table, NSMakePoint(60, NSMinY(rowOnTable(row)) + down));
    };
    EXPECT_TRUE(drive("mousemove " + at(0, 11) +
                          " sleep 0.2 mousedown 1 sleep 0.2 mousemove_relative 2 5 sleep 0.2 mousemove " +
                          at(1, 11) + " sleep 0.3 mousemove " + at(2, 16) +
                          " sleep 0.3 mousemove_relative 0 1 sleep 0.4 mouseup 1",
                      [&] { return names() == "bcad"; }))
        << names();
    EXPECT_EQ([table selectedRow], 2);
}

TEST_F(Driven, PrintsTheNotes)
{
    add("a.img");
    ASSERT_TRUE(toFront());
    [shelf_ printNotes:nil];
    EXPECT_NE(texts([sheet() contentView]).find("There are no notes"), std::string::npos);
    ASSERT_TRUE(drive("key Return", [&] { return [shelf_->mWindow attachedSheet] == nil; }));
    [[[shelf_->mRows datasourceArray] objectAtIndex:0] setObject:@"Lent to Rosalind" forKey:kNote];
    NSPrintInfo *info = [NSPrintInfo sharedPrintInfo];
    [info setJobDisposition:NSPrintSaveJob];
    [[info dictionary] setObject:ns(folder_ / "notes.pdf") forKey:NSPrintSavePath];
    pressWhenShown(@"OK");     // the page
    pressWhenShown(@"Print");  // the printer
    ASSERT_TRUE(toFront());
    ASSERT_TRUE(drive("key ctrl+p", [&] { return std::filesystem::exists(folder_ / "notes.pdf"); }));
    const std::string words = runProgram({"pdftotext", "-raw", folder_ / "notes.pdf", "-"}).out;
    EXPECT_NE(words.find("a.img\nLent to Rosalind"), std::string::npos) << words;
    // Not to the paper's edge.
    const std::string places = runProgram({"pdftotext", "-bbox", folder_ / "notes.pdf", "-"}).out;
    const auto first = [&](const std::string &name) {
        return std::atof(places.c_str() + places.find(name + "=\"") + name.size() + 2);
    };
    EXPECT_NEAR(first("xMin"), 72, 10);
    EXPECT_NEAR(first("yMin"), 90, 10);
}

}  // namespace
