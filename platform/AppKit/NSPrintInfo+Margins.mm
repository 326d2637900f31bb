// gnustep-gui's print information begins with no margins: text was printed to the edges of the paper, which printers cut off.
#import <AppKit/NSPrintInfo.h>

#include "platform/Foundation/private/HiddenMethod.h"

@implementation NSPrintInfo (Margins)

+ (NSPrintInfo *)sharedPrintInfo
{
    static const auto shared =
        tarvik::hiddenMethod<NSPrintInfo *(*)(id, SEL)>(object_getClass([NSPrintInfo class]), _cmd);
    static NSPrintInfo *dressed;
    NSPrintInfo *info = shared(self, _cmd);
    if (info == dressed)
        return info;
    dressed = info;
    if ([info leftMargin] == 0 && [info rightMargin] == 0 && [info topMargin] == 0 &&
        [info bottomMargin] == 0) {
        constexpr CGFloat kSide = 72, kEnd = 90;
        [info setLeftMargin:kSide];
        [info setRightMargin:kSide];
        [info setTopMargin:kEnd];
        [info setBottomMargin:kEnd];
    }
    return info;
}

@end
