#import <Foundation/NSString.h>
#import <Tarvik/ui/NSResponder+Logging.h>

@implementation NSResponder (AppKitX)

- (void)logResponderChain
{
    NSLog(@"---------------------- ResponderChain ----------------------");
    for (NSResponder *responder = self; responder; responder = [responder nextResponder])
        NSLog(@"%@", responder);
}

@end
