/// \file
/// What may be deleted must be there: gnustep-base looks at its folder alone.
#include "platform/Foundation/private/HiddenMethod.h"

#import <Foundation/Foundation.h>

@interface NSFileManager (TarvikAccess)
@end

@implementation NSFileManager (TarvikAccess)

- (BOOL)isDeletableFileAtPath:(NSString *)path
{
    static const auto original =
        tarvik::hiddenMethod<BOOL (*)(id, SEL, NSString *)>([NSFileManager class], _cmd);
    return [self fileAttributesAtPath:path traverseLink:NO] && original(self, _cmd, path);
}

@end
