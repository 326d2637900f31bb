#import <Tarvik/system/NSString+FileReferences.h>
#import <Tarvik/system/NSString+ResourceForks.h>
#include <Tarvik/system/ResourceFiles.h>

#import <Foundation/NSPathUtilities.h>

@implementation NSString (FoundationXResourceForks)

- (ResFileRefNum)openResourceFork:(BOOL)create
{
    FSRef file;
    return RFOpen([[self stringByExpandingTildeInPath] getFSRef:&file] ? &file : nullptr, create);
}

@end
