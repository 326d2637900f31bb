#include "ShelfController.h"

#include "CatalogueXML.h"
#include "Panels.h"
#include "Publishing.h"

#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Pool.h>

#include <memory>
#include <utility>

namespace {

NSString *const kAddressDefault = @"PublishAddress";

/// Waits on this thread's run loop for the transfer's end; the reason of a failure, or nil.
tarvik::Retained<NSString *> publishAndWait(Job *job, NSString *url, const std::string &xml)
{
    constexpr NSTimeInterval kTurn = 0.1;
    bool ended = false;
    tarvik::Retained<NSString *> why;
    const auto cancel = shelf::publish(url, xml, [&](NSString *reason) {
        why = tarvik::retain(reason);
        ended = true;
    });
    while (!ended && !job->mCancelled) {
        tarvik::Pool pool;
        [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode
                                 beforeDate:[NSDate dateWithTimeIntervalSinceNow:kTurn]];
    }
    if (!ended)
        cancel();
    return why;
}

}  // namespace

@implementation ShelfController (Catalogue)

- (IBAction)exportCatalogue:(id)sender
{
    (void)sender;
    shelf::chooseDestination(
        mWindow,
        {.title = [@"Export the catalogue" localize], .name = [@"Catalogue.xml" localize], .type = @"xml"},
        [self](NSString *path) { [self exportTo:path]; });
}

- (void)exportTo:(NSString *)path
{
    NSData *xml = tarvik::nsdata(shelf::xmlOfRows([mRows datasourceArray]));
    if (![xml writeToFile:path atomically:YES])
        [self failed:[@"The catalogue could not be written." localize]
             because:[NSString stringWithFormat:[@"Check that you may write in the folder “%@” and that "
                                                 @"there is room on the disk." localize],
                                                [path stringByDeletingLastPathComponent]]];
}

- (IBAction)publishCatalogue:(id)sender
{
    (void)sender;
    NSString *last = [[NSUserDefaults standardUserDefaults] stringForKey:kAddressDefault];
    shelf::chooseText(mWindow, [@"Send the catalogue as XML to this web address:" localize],
                      last ? last : @"https://", [@"Publish" localize],
                      [self](NSString *url) { [self publishTo:url]; });
}

- (void)publishTo:(NSString *)given
{
    const auto url = tarvik::adopt((NSString *)[given copy]);
    const std::string xml = shelf::xmlOfRows([mRows datasourceArray]);
    auto reason = std::make_shared<tarvik::Retained<NSString *>>();
    const auto work = [=](Job *me) { *reason = publishAndWait(me, url.get(), xml); };
    [mJobs add:makeJob([@"Publishing the catalogue…" localize], work, [=](Job *me) {
               if (me->mCancelled)
                   return;
               if (NSString *why = reason->get()) {
                   [self failed:[@"The catalogue was not published." localize]
                        because:[NSString
                                    stringWithFormat:
                                        @"%@\n%@\n\n%@", url.get(), why,
                                        [@"Check the address and the network connection, then publish again."
                                            localize]]];
               } else {
                   [[NSUserDefaults standardUserDefaults] setObject:url.get() forKey:kAddressDefault];
                   [self tell:[@"The catalogue was published." localize]];
               }
           })];
}

- (NSString *)notesText
{
    NSMutableString *text = [NSMutableString string];
    for (id row : tarvik::each<NSObject>([mRows datasourceArray])) {
        NSString *note = shelf::text(row, shelf::kNote);
        if ([note length])
            [text appendFormat:@"%@\n%@\n%@\n\n", shelf::text(row, shelf::kName),
                               shelf::text(row, shelf::kPath), note];
    }
    return text;
}

- (IBAction)printNotes:(id)sender
{
    (void)sender;
    NSString *notes = [self notesText];
    if (![notes length]) {
        shelf::ask(mWindow,
                   {.title = [@"There are no notes to print." localize],
                    .message = [@"Double-click a row's cell in the column Note and type one." localize],
                    .isFailure = false});
        return;
    }
    NSTextView *page = [[[NSTextView alloc] initWithFrame:NSMakeRect(0, 0, 500, 700)] autorelease];
    [page setFont:[NSFont userFontOfSize:11]];
    [page setString:notes];
    [page runPrintModal];
}

@end
