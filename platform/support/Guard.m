#import <Foundation/Foundation.h>

BOOL TarvikTry(void (*body)(void *context), void *context, NSException **raised);

BOOL TarvikTry(void (*body)(void *context), void *context, NSException **raised)
{
    @try {
        body(context);
        return YES;
    } @catch (NSException *exception) {
        *raised = [exception retain];
        return NO;
    }
}
