#import <Tarvik/ui/NSMenu+Tags.h>

@implementation NSMenu (AppKitX)

- (NSMenuItem *)itemWithTags:(int)tag, ...
{
    va_list tags;
    va_start(tags, tag);
    NSMenuItem *item = [self itemWithTags:tag arguments:tags];
    va_end(tags);
    return item;
}

- (NSMenuItem *)itemWithTags:(int)tag arguments:(va_list)tags
{
    if (tag == 0 || !tags)
        return nil;
    NSMenu *menu = self;
    for (;;) {
        NSMenuItem *item = [menu itemWithTag:tag];
        if (!item || (tag = va_arg(tags, int)) == 0)
            return item;
        menu = [item submenu];
    }
}

@end
