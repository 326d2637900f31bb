#import <Foundation/NSData.h>
#import <Tarvik/support/Retained.h>
#import <Tarvik/text/NSString+TextFile.h>

@implementation NSString (FoundationXTextFile)

- (id)initWithTextFile:(NSString *)path encoding:(NSStringEncoding)encoding
{
    const auto contents = tarvik::adopt(path ? [[NSData alloc] initWithContentsOfFile:path] : nil);
    if (contents)
        return [self initWithData:contents.get() encoding:encoding];
    [self release];
    return nil;
}

@end
