#import <Foundation/Foundation.h>
#import <Tarvik/Tarvik.h>

int main(void)
{
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    NSString *kept = [AddToExitPool([[NSString alloc] initWithFormat:@"kept until %s", "exit"]) autorelease];
    printf("%s %d\n", [kept UTF8String], NSIsEqual(nil, nil));
    [pool drain];
    return 0;
}
