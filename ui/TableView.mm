#include <Tarvik/core/SystemVersion.h>
#import <Tarvik/ui/TableView.h>

#include "ui/private/SystemGates.h"

@implementation TableView

- (NSDragOperation)draggingSourceOperationMaskForLocal:(BOOL)isLocal
{
    constexpr NSDragOperation kEveryBit = 0xFFFFFFFF;
    return GestaltSystemVersion() > kLastSystemDraggingRowNumbers
               ? [super draggingSourceOperationMaskForLocal:isLocal]
               : kEveryBit;
}

@end
