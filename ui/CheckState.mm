#import <Tarvik/ui/CheckState.h>

@implementation NSButton (AppKitX)
- (BOOL)checked
{
    return [self state] != 0;
}
- (void)setChecked:(BOOL)checked
{
    [self setState:checked ? 1 : 0];
}
@end

@implementation NSCell (AppKitX)
- (BOOL)checked
{
    return [self state] != 0;
}
- (void)setChecked:(BOOL)checked
{
    [self setState:checked ? 1 : 0];
}
@end

@implementation NSMenuItem (AppKitX)
- (BOOL)checked
{
    return [self state] != 0;
}
- (void)setChecked:(BOOL)checked
{
    [self setState:checked ? 1 : 0];
}
- (void)toggleChecked
{
    [self setState:![self checked]];
}
@end
