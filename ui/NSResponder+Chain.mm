#import <Tarvik/support/Retained.h>
#import <Tarvik/ui/NSResponder+Chain.h>

@implementation NSResponder (AppKitXChain)

- (void)insertNextResponder:(NSResponder *)responder
{
    const auto next = tarvik::retain([self nextResponder]);
    if (!responder || responder == next.get())
        return;
    [self setNextResponder:responder];
    if (next)
        [responder setNextResponder:next.get()];
}

@end
