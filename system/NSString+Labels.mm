#include <Tarvik/system/FileLabels.h>
#import <Tarvik/system/NSString+FileReferences.h>
#import <Tarvik/system/NSString+Labels.h>

@implementation NSString (FoundationXLabels)

- (UInt32)labelColorIndex
{
    FSRef ref;
    return [self getFSRef:&ref] ? FSGetLabelColorIndex(&ref) : 0;
}

- (UInt8)labelColorValue
{
    FSRef ref;
    return [self getFSRef:&ref] ? FSGetLabelColorValue(&ref) : 0;
}

- (BOOL)setLabelColorIndex:(UInt32)index
{
    FSRef ref;
    return [self getFSRef:&ref] && FSSetLabelColorIndex(&ref, index);
}

- (BOOL)setLabelColorValue:(UInt8)value
{
    FSRef ref;
    return [self getFSRef:&ref] && FSSetLabelColorValue(&ref, value);
}

@end
