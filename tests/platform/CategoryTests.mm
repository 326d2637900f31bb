#include "../support/Categories.h"

#import <Foundation/Foundation.h>
#include <gtest/gtest.h>

// What the check must find, on a class that no other test asks for anything: a replaced method, one in the way of a class
// above, and one of a metaclass.
@interface NSUndoManager (ReplacedInTests)
- (NSInteger)groupingLevel;
- (BOOL)isKindOfClass:(Class)other;
+ (id)alloc;
- (int)ownOfTheTests;
@end
@implementation NSUndoManager (ReplacedInTests)
- (NSInteger)groupingLevel
{
    return 0;
}
- (BOOL)isKindOfClass:(Class)other
{
    return [super isKindOfClass:other];
}
+ (id)alloc
{
    return [super alloc];
}
- (int)ownOfTheTests
{
    return 1;
}
@end

namespace {

// The methods that we replace on purpose; each says in its source what was wrong. A new repair is added here, a method that
// meets one of the platform's by accident gets another name.
const std::set<std::string> kRepairs = {
    "+[NSBundle allBundles]",
    "+[NSBundle bundleWithIdentifier:]",
    "+[NSBundle pathForLibraryResource:ofType:inDirectory:]",
    "+[NSHost hostWithAddress:]",
    "+[NSHost hostWithName:]",
    "+[NSPropertyListSerialization dataFromPropertyList:format:errorDescription:]",
    "+[NSPropertyListSerialization dataWithPropertyList:format:options:error:]",
    "+[NSPropertyListSerialization propertyListFromData:mutabilityOption:format:errorDescription:]",
    "+[NSPropertyListSerialization propertyListWithData:options:format:error:]",
    "+[NSTask allocWithZone:]",
    "+[NSTask initialize]",
    "-[GSFileHandle availableData]",
    "-[GSFileHandle readDataToEndOfFile]",
    "-[GSFileHandle writeData:]",
    "-[GSMutableArray exchangeObjectAtIndex:withObjectAtIndex:]",
    "-[GSMutableArray replaceObjectsInRange:withObjectsFromArray:]",
    "-[GSMutableString mutableCopyWithZone:]",
    "-[GSMutableString mutableCopy]",
    "-[GSUnicodeString mutableCopyWithZone:]",
    "-[GSUnicodeString mutableCopy]",
    "-[NSBundle bundleIdentifier]",
    "-[NSBundle dealloc]",
    "-[NSBundle executablePath]",
    "-[NSBundle infoDictionary]",
    "-[NSBundle initWithPath:]",
    "-[NSBundle localizations]",
    "-[NSBundle pathForResource:ofType:]",
    "-[NSBundle pathForResource:ofType:inDirectory:]",
    "-[NSBundle pathForResource:ofType:inDirectory:forLocalization:]",
    "-[NSBundle pathsForResourcesOfType:inDirectory:]",
    "-[NSBundle pathsForResourcesOfType:inDirectory:forLocalization:]",
    "-[NSBundle resourcePath]",
    "-[NSFileManager changeFileAttributes:atPath:]",
    "-[NSFileManager copyPath:toPath:handler:]",
    "-[NSFileManager fileSystemRepresentationWithPath:]",
    "-[NSFileManager isDeletableFileAtPath:]",
    "-[NSFileManager movePath:toPath:handler:]",
    "-[NSFileManager removeFileAtPath:handler:]",
    "-[NSFileManager stringWithFileSystemRepresentation:length:]",
    "-[NSFileManager subpathsAtPath:]",
    "-[NSMutableDataMalloc setCapacity:]",
    "-[NSPipe init]",
    "-[NSString mutableCopyWithZone:]",
    "-[NSString stringByAbbreviatingWithTildeInPath]",
    "-[NSString stringByStandardizingPath]",
};

TEST(Categories, NoneReplacesAMethodOfThePlatform)
{
    std::set<std::string> replaced = methodsReplacedBy("libtarvik.so");
    for (const std::string &repair : kRepairs)
        replaced.erase(repair);
    EXPECT_EQ(replaced, std::set<std::string>{});
}

TEST(Categories, AReplacedMethodIsNoticed)
{
    const std::set<std::string> expected = {"-[NSUndoManager groupingLevel]",
                                            "-[NSUndoManager isKindOfClass:]", "+[NSUndoManager alloc]"};
    EXPECT_EQ(methodsReplacedBy("tarvik-tests-platform"), expected);
}

}  // namespace
