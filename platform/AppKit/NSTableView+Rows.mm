// Without a data source gnustep-gui looks for a binding of the first column to count the rows, and raises where there is no column.
#import <AppKit/NSTableView.h>

#include "platform/Foundation/private/HiddenMethod.h"

@interface NSTableView (Rows)
- (NSInteger)_numRows;
@end

@implementation NSTableView (Rows)

- (NSInteger)_numRows
{
    static const auto numRows = tarvik::hiddenMethod<NSInteger (*)(id, SEL)>([NSTableView class], _cmd);
    return _dataSource || [_tableColumns count] ? numRows(self, _cmd) : 0;
}

@end
