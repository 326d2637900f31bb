#import <AppKit/NSDocumentController.h>
#import <Tarvik/ui/NSDocument+Current.h>

@implementation NSDocument (AppKitX)
+ (id)current
{
    return [[NSDocumentController sharedDocumentController] currentDocument];
}
@end
