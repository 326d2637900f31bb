#include "MainMenu.h"

#include "Catalogue.h"
#include "Style.h"

#include <Tarvik/Tarvik.h>

#include <initializer_list>

namespace shelf {
namespace {

struct Entry {
    NSString *title;  // nil: a separator
    SEL action;
    NSString *key = @"";
    int tag = 0;
};
const Entry kLine = {nil, nullptr};

/// Not validated while it grows: AppKit would do it with each change of an item.
NSMenu *growingMenu(NSString *title)
{
    NSMenu *made = [[[NSMenu alloc] initWithTitle:title] autorelease];
    [made setAutoenablesItems:NO];
    return made;
}

NSMenu *menu(NSString *title, std::initializer_list<Entry> entries)
{
    NSMenu *made = growingMenu([title localize]);
    for (const Entry &entry : entries) {
        if (!entry.title) {
            [made addItem:[NSMenuItem separatorItem]];
            continue;
        }
        id<NSMenuItem> item = [made addItemWithTitle:[entry.title localize]
                                              action:entry.action
                                       keyEquivalent:entry.key];
        [item setTag:entry.tag];
    }
    [made setAutoenablesItems:YES];
    return made;
}

void hang(NSMenu *submenu, NSMenu *menu)
{
    id<NSMenuItem> item = [menu addItemWithTitle:[submenu title] action:nullptr keyEquivalent:@""];
    [menu setSubmenu:submenu forItem:item];
}

}  // namespace

NSMenu *labelMenu(id target)
{
    NSMenu *made = growingMenu([@"Label" localize]);
    for (int label = 0; label < kLabelCount; ++label) {
        id<NSMenuItem> item =
            [made addItemWithTitle:[labelName(label) localize]
                            action:@selector(setImageLabel:)
                     keyEquivalent:!target ? [NSString stringWithFormat:@"%d", label] : @""];
        [item setTag:label];
        [item setTarget:target];
        [item setImage:labelSpot(label)];
    }
    [made setAutoenablesItems:YES];
    return made;
}

NSMenu *mainMenu()
{
    NSMenu *image = menu(@"Image", {{@"Mount", @selector(mountImages:), @"m"},
                                    {@"Unmount", @selector(unmountImages:), @"u"},
                                    {@"Open", @selector(openImages:)},
                                    {@"Reveal in File Viewer", @selector(revealImages:), @"r"},
                                    kLine,
                                    {@"Verify Checksum", @selector(verifyImages:), @"k"}});
    hang(labelMenu(nil), image);
    NSMenu *sort = menu(@"Sort", {{@"By Name", @selector(sortByColumn:), @"", 0},
                                  {@"By Path", @selector(sortByColumn:), @"", 1},
                                  {@"By Mount Point", @selector(sortByColumn:), @"", 2},
                                  {@"By Size", @selector(sortByColumn:), @"", 3},
                                  {@"By Label", @selector(sortByColumn:), @"", 5},
                                  kLine,
                                  {@"Sort Selection", @selector(sortSelection:)}});
    NSMenu *bar = [[[NSMenu alloc] initWithTitle:[@"Shelf" localize]] autorelease];
    // Called as the process is: there AppKit puts what belongs to an application, and would make such a menu otherwise.
    hang(menu([[NSProcessInfo processInfo] processName],
              {{@"About Shelf", @selector(orderFrontStandardAboutPanel:)},
               kLine,
               {@"Quit", @selector(terminate:), @"q"}}),
         bar);
    hang(menu(@"File", {{@"New Image from Folder…", @selector(newImageFromFolder:), @"n"},
                        {@"Add Images…", @selector(addImages:), @"o"},
                        kLine,
                        {@"Export Catalogue…", @selector(exportCatalogue:), @"e"},
                        {@"Publish Catalogue…", @selector(publishCatalogue:), @"E"},
                        {@"Print Notes…", @selector(printNotes:), @"p"}}),
         bar);
    hang(menu(@"Edit", {{@"Undo", @selector(undo:), @"z"},
                        {@"Redo", @selector(redo:), @"Z"},
                        kLine,
                        {@"Cut", @selector(cut:), @"x"},
                        {@"Copy", @selector(copy:), @"c"},
                        {@"Paste", @selector(paste:), @"v"},
                        {@"Delete", @selector(delete:)},
                        {@"Select All", @selector(selectAll:), @"a"}}),
         bar);
    hang(image, bar);
    hang(sort, bar);
    return bar;
}

}  // namespace shelf
