#import <Tarvik/support/Retained.h>
#import <Tarvik/text/NSString+TextFile.h>
#import <Tarvik/ui/NSText+Files.h>

@implementation NSText (AppKitX)

- (void)setStringFromFile:(NSString *)path encoding:(NSStringEncoding)encoding
{
    const auto text = tarvik::adopt([[NSString alloc] initWithTextFile:path encoding:encoding]);
    if (text)
        [self setString:text.get()];
}

@end
