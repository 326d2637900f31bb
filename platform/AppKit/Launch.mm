#include "platform/AppKit/private/Launch.h"

#import <AppKit/NSApplication.h>
#import <Foundation/NSNotification.h>
#import <Tarvik/support/Pool.h>

#include <vector>

namespace {

/// Filled while the library is loaded, by files that may come before this one.
std::vector<void (*)()> &functions()
{
    static std::vector<void (*)()> functions;
    return functions;
}

}  // namespace

tarvik::AtLaunch::AtLaunch(void (*function)()) { functions().push_back(function); }

@interface LaunchNotice : NSObject
@end

@implementation LaunchNotice

+ (void)load
{
    tarvik::Pool pool;
    [[NSNotificationCenter defaultCenter] addObserver:self
                                             selector:@selector(applicationIsLaunched:)
                                                 name:NSApplicationWillFinishLaunchingNotification
                                               object:nil];
}

+ (void)applicationIsLaunched:(NSNotification *)notification
{
    (void)notification;
    for (const auto function : functions())
        function();
}

@end
