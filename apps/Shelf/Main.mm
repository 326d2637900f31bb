// Shelf: a catalogue of disk images.
#import <AppKit/AppKit.h>
#include <Tarvik/TarvikUI.h>
#import <Tarvik/support/Pool.h>

#include "ShelfController.h"
#include "Style.h"

int main(int argc, const char **argv)
{
    tarvik::Pool pool;
    shelf::registerStyle();
    CDSAUtilityBase::cssmStartup();  // before threads compute digests
    [NSApplication sharedApplication];
    ShelfController *controller = [[ShelfController alloc] init];
    [NSApp setDelegate:(id)controller];
    return NSApplicationMain(argc, argv);
}
