#import <Foundation/Foundation.h>
#import <Tarvik/core/Types.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Guard.h>
#import <Tarvik/support/Pool.h>
#import <Tarvik/text/FoundationAdditions.h>
#import <Tarvik/text/NSArray+Collections.h>
#import <Tarvik/text/NSDictionary+Keys.h>

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace {

class Collections : public testing::Test {
    tarvik::Pool pool;
};

NSMutableArray *letters(std::string_view text)
{
    NSMutableArray *array = [NSMutableArray array];
    for (const char c : text)
        [array addObject:tarvik::nsstring(std::string_view(&c, 1))];
    return array;
}

std::string text(NSArray *array) { return tarvik::utf8([array componentsJoinedByString:@""]).value_or("?"); }
NSData *list(const std::vector<uint32_t> &indexes)
{
    return [NSData dataWithBytes:indexes.data() length:indexes.size() * 4];
}

/// The steps of a move on a plain string; "" when one of them goes beyond the end.
std::string moved(std::string rows, const std::vector<uint32_t> &indexes, uint32_t &destination)
{
    std::string taken;
    for (const uint32_t index : indexes) {
        if (index >= rows.size())
            return "";
        taken += rows[index];
    }
    for (auto index = indexes.rbegin(); index != indexes.rend(); ++index) {
        if (*index >= rows.size())
            return "";
        rows.erase(*index, 1);
        if (destination > *index && destination != 0)
            --destination;
    }
    for (auto c = taken.rbegin(); c != taken.rend(); ++c)
        rows.insert(destination < rows.size() ? destination : rows.size(), 1, *c);
    return rows;
}

TEST_F(Collections, MovesRows)
{
    const struct {
        std::vector<uint32_t> indexes;
        uint32_t destination;
        const char *result;
        uint32_t answer;
    } cases[] = {{{0, 1}, 4, "CDABE", 2},          {{3}, 0, "DABCE", 0},    {{1}, 5, "ACDEB", 4},
                 {{0, 4}, 5, "BCDAE", 3},          {{1, 3}, 2, "ABDCE", 1}, {{0, 1, 2}, 99, "DECBA", 96},
                 {{0, 1, 2, 3, 4}, 2, "ABCDE", 0}, {{2, 0}, 5, "BCECA", 3}};
    for (const auto &[indexes, destination, result, answer] : cases) {
        NSMutableArray *rows = letters("ABCDE");
        EXPECT_EQ([rows moveObjects:list(indexes) toIndex:destination], answer) << result;
        EXPECT_EQ(text(rows), result);
    }
    NSMutableArray *rows = letters("ABCDE");
    EXPECT_EQ([rows moveObjects:[NSData dataWithBytes:"\1\0\0" length:3] toIndex:0],
              uint32_t(kTarvikNotFound));
    EXPECT_EQ([rows moveObjects:nil toIndex:0], uint32_t(kTarvikNotFound));
    EXPECT_EQ([rows moveObjects:list({1, 5}) toIndex:0], uint32_t(kTarvikNotFound));
    EXPECT_EQ(text(rows), "ABCDE");
}

TEST_F(Collections, MovesAsTheStepsSayWhateverTheList)
{
    std::mt19937 random(7);
    for (int round = 0; round < 5000; ++round) {
        tarvik::Pool inner;
        const std::string rows("abcdefghij", random() % 11);
        std::vector<uint32_t> indexes(1 + random() % 6);
        for (uint32_t &index : indexes)
            index = uint32_t(random() % 11);
        if (round % 2) {
            std::sort(indexes.begin(), indexes.end());
            indexes.erase(std::unique(indexes.begin(), indexes.end()), indexes.end());
        }
        const auto destination = uint32_t(random() % 16);
        uint32_t place = destination;
        const std::string expected = moved(rows, indexes, place);
        NSMutableArray *array = letters(rows);
        const uint32_t answer = [array moveObjects:list(indexes) toIndex:destination];
        if (expected.empty()) {
            EXPECT_EQ(answer, uint32_t(kTarvikNotFound));
        } else {
            EXPECT_EQ(answer, place);
            EXPECT_EQ(text(array), expected) << rows << " to " << destination;
        }
    }
}

// The same object at several places: each keeps its own reference.
TEST_F(Collections, MovingKeepsReferenceCounts)
{
    NSObject *object = [[NSObject new] autorelease];
    NSMutableArray *array = [NSMutableArray arrayWithObjects:object, @"x", object, @"y", object, nil];
    const NSUInteger before = [object retainCount];
    {
        tarvik::Pool inner;
        [array moveObjects:list({0, 2}) toIndex:4];
        [array insertObjectsFromArray:array atIndex:1];
        EXPECT_EQ([array count], 10U);
        [array replaceObjectsInRange:NSMakeRange(1, 5) withObjectsFromArray:[NSArray array]];
    }
    EXPECT_EQ([object retainCount], before);
    [array removeAllObjects];
    EXPECT_EQ([object retainCount], before - 3);
}

TEST_F(Collections, InsertsInOrderNewestFirst)
{
    NSNumber *old = [NSNumber numberWithInt:2], *fresh = [NSNumber numberWithDouble:2.0];
    NSMutableArray *numbers =
        [NSMutableArray arrayWithObjects:[NSNumber numberWithInt:1], old, [NSNumber numberWithInt:3], nil];
    EXPECT_EQ([numbers insertObject:fresh atIndexUsingSelector:NULL], 1U);
    EXPECT_EQ([numbers objectAtIndex:1], fresh);
    EXPECT_EQ([numbers insertObject:[NSNumber numberWithInt:9] atIndexUsingSelector:@selector(compare:)], 4U);
    EXPECT_EQ([numbers insertObject:nil atIndexUsingSelector:NULL], 0U);
    EXPECT_TRUE([letters("aB") containsObject:@"b" usingSelector:@selector(caseInsensitiveCompare:)]);
    EXPECT_FALSE([letters("aB") containsObject:@"b" usingSelector:@selector(compare:)]);
    EXPECT_FALSE([letters("aB") containsObject:@"b" usingSelector:NULL]);
}

TEST_F(Collections, InsertsReplacesAndTakesOut)
{
    NSMutableArray *array = letters("abc");
    [array insertObjectsFromArray:letters("XY") atIndex:1];
    [array insertObjectsFromArray:letters("Z") atIndex:99];
    [array insertObjectsFromArray:nil atIndex:0];
    EXPECT_EQ(text(array), "aXYbcZ");
    EXPECT_TRUE([array insertOrAddObject:@"0" atIndex:0]);
    EXPECT_FALSE([array insertOrAddObject:@"9" atIndex:7]);
    EXPECT_TRUE([array replaceOrAddObjectAtIndex:0 withObject:@"1"]);
    EXPECT_FALSE([array replaceOrAddObjectAtIndex:8 withObject:@"8"]);
    EXPECT_FALSE([array replaceOrAddObjectAtIndex:0 withObject:nil]);
    EXPECT_EQ(text(array), "1aXYbcZ98");
    NSString *taken = [array copyRemoveObjectAtIndex:1];
    EXPECT_EQ(text(array), "1XYbcZ98");
    EXPECT_TRUE([taken isEqual:@"a"]);
    [taken release];
}

TEST_F(Collections, KeysThatAreNumbers)
{
    NSMutableDictionary *dictionary = [NSMutableDictionary dictionaryWithObject:@"minus" forKey:@"-7"];
    EXPECT_TRUE([[dictionary objectForNumber:-7] isEqual:@"minus"]);
    [dictionary setObject:@"answer" forNumber:42];
    [dictionary setObject:nil forNumber:43];
    EXPECT_EQ([dictionary count], 2U);
    EXPECT_EQ(CFDictionaryGetValueForNumber(CFDictionaryRef(dictionary), 42),
              [dictionary objectForKey:@"42"]);
    EXPECT_EQ(CFDictionaryGetValueForNumber(CFDictionaryRef(dictionary), 1), nullptr);
    EXPECT_EQ(CFDictionaryGetValueForNumber(nullptr, 1), nullptr);
}

TEST_F(Collections, FollowsKeyPaths)
{
    NSDictionary *inner = [NSDictionary dictionaryWithObject:@"leaf" forKey:@"b"];
    NSDictionary *root = [NSDictionary dictionaryWithObjectsAndKeys:inner, @"a", @"text", @"s", nil];
    EXPECT_TRUE(([[root objectForKeys:@"a", @"b", nil] isEqual:@"leaf"]));
    EXPECT_EQ(([root objectForKeys:@"s", @"b", nil]), nil) << "through a string";
    EXPECT_EQ(([root objectForKeys:@"x", @"b", nil]), nil);
    EXPECT_EQ([root objectForKeys:nil], root);
    NSString *const path[] = {@"a", @"b", nil}, *const none[] = {nil};
    EXPECT_TRUE([[root objectForKeyStrings:path] isEqual:@"leaf"]);
    EXPECT_EQ([root objectForKeyStrings:none], root);
    EXPECT_EQ([root objectForKeyStrings:NULL], nil);
}

TEST_F(Collections, RenamesExchangesAndTakesOutEntries)
{
    NSMutableDictionary *entries =
        [NSMutableDictionary dictionaryWithObjectsAndKeys:@"1", @"a", @"2", @"b", nil];
    EXPECT_FALSE([entries changeKey:@"a" toKey:@"b" replace:NO]);
    EXPECT_EQ([entries count], 2U);
    EXPECT_FALSE([entries changeKey:@"a" toKey:@"b" replace:YES]);
    EXPECT_TRUE([entries isEqual:[NSDictionary dictionaryWithObject:@"1" forKey:@"b"]]);
    [entries changeKey:@"b" toKey:@"b" replace:YES];
    [entries changeKey:nil toKey:@"b" replace:YES];
    EXPECT_TRUE([entries isEqual:[NSDictionary dictionaryWithObject:@"1" forKey:@"b"]]);
    tarvik::Retained<NSException *> raised;
    EXPECT_FALSE(tarvik::attempt([&] { [entries changeKey:@"absent" toKey:@"c" replace:YES]; }, &raised));
    EXPECT_TRUE([[raised.get() name] isEqual:NSInvalidArgumentException]);

    EXPECT_TRUE([[entries exchangeObject:@"new" forKey:@"b"] isEqual:@"1"]);
    EXPECT_TRUE([[entries exchangeObject:nil forKey:@"b"] isEqual:@"new"]);
    EXPECT_EQ([entries exchangeObject:@"x" forKey:nil], nil);
    EXPECT_TRUE([[entries objectForKey:@"c" withSpare:@"spare"] isEqual:@"spare"]);
    EXPECT_TRUE([[entries objectForKey:@"c" withSpare:@"other"] isEqual:@"spare"]);
    EXPECT_EQ([entries objectForKey:@"d" withSpare:nil], nil);
    id taken = [entries copyRemoveObjectForKey:@"c"];
    EXPECT_TRUE([taken isEqual:@"spare"]);
    EXPECT_EQ([entries objectForKey:@"c"], nil);
    [taken release];
    EXPECT_EQ([entries copyRemoveObjectForKey:@"c"], nil);
}

int collect(NSString *, NSString *subpath, void *found)
{
    auto *names = static_cast<std::vector<std::string> *>(found);
    names->push_back(*tarvik::utf8(subpath));
    return names->size() < 3 ? int(names->size()) : 0;
}

TEST_F(Collections, SmallAdditions)
{
    EXPECT_EQ([NSNumber yesNumber], [NSNumber yesNumber]);
    EXPECT_TRUE([[NSNumber yesNumber] boolValue] && ![[NSNumber noNumber] boolValue]);
    EXPECT_EQ([[@"x" hashNumber] unsignedLongValue], [@"x" hash]);

    TemporaryFolder folder;
    std::filesystem::create_directories(folder / "a/b");
    folder.write("a/b/c", "");
    std::vector<std::string> names;
    NSFileManager *manager = [NSFileManager defaultManager];
    NSString *path = tarvik::nsstring(folder.path().native());
    EXPECT_EQ([manager enumerateSubpathsAtPath:path withFunction:collect userdata:&names], 0);
    EXPECT_EQ(names, (std::vector<std::string>{"a", "a/b", "a/b/c"}));
    names.clear();
    EXPECT_EQ([manager enumerateSubpathsAtPath:[path stringByAppendingPathComponent:@"a"]
                                  withFunction:collect
                                      userdata:&names],
              2);
    EXPECT_EQ([manager enumerateSubpathsAtPath:nil withFunction:collect userdata:&names], 0);
}

}  // namespace
