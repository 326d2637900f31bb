#include <Carbon/TextEncodingConverter.h>
#import <Foundation/Foundation.h>
#import <Tarvik/support/Bridge.h>
#include <Tarvik/text/CStringConversion.h>
#include <Tarvik/text/EncodingConversion.h>
#import <Tarvik/text/NSString+Encoding.h>
#include <gtest/gtest.h>

#include <cstdlib>

using namespace std::literals;

namespace {

CFStringRef text(std::string_view bytes) { return (CFStringRef)tarvik::nsstring(bytes); }

std::string taken(char *allocated)
{
    const std::string out = allocated ? allocated : "<null>";
    free(allocated);
    return out;
}

struct Converted {
    std::string bytes;
    ByteCount in, out;
    OSStatus status;
};

Converted convert(std::string_view from, TextEncoding to, UInt32 bytesPerCharacter = 0)
{
    Converted result{};
    char *buffer = CFStringAllocTECConvertedText(text(from), to, bytesPerCharacter, &result.in, &result.out,
                                                 &result.status);
    EXPECT_NE(buffer, nullptr);
    result.bytes = buffer ? std::string(buffer, result.out) : "";
    free(buffer);
    return result;
}

TEST(EncodedCStrings, TheBufferHasTwoBytesForEachUnit)
{
    EXPECT_EQ(taken(CFStringAllocCString(text("Zürich"), kCFStringEncodingMacRoman)), "Z\x9Frich");
    EXPECT_EQ(taken(CFStringAllocCString(text("日本語"), kCFStringEncodingUTF8)), "<null>");
    EXPECT_EQ(taken(CFStringAllocCString(text("日本語"), kCFStringEncodingEUC_JP)),
              "\xC6\xFC\xCB\xDC\xB8\xEC");
    EXPECT_EQ(taken(CFStringAllocCString(text("日"), kCFStringEncodingASCII)), "<null>");
    // UTF-8 does not fit: the first of the list that does.
    const std::string japanese = taken(CFStringAllocConvertableCString(text("日本語")));
    EXPECT_EQ(japanese.size(), 6u) << "whole: UTF-16 would end with its first zero byte";
    EXPECT_EQ(taken(CFStringAllocConvertableCString(text("a日本語"))).size(), 7u);
    EXPECT_EQ(taken(CFStringAllocConvertableCString(text("é"))), "é");
    EXPECT_EQ(CFStringAllocConvertableCString(nullptr), nullptr);
}

TEST(EncodedCStrings, CallersBuffers)
{
    char buffer[8];
    EXPECT_TRUE(CFStringGetConvertableCString(text("aé"), buffer, 4));
    EXPECT_STREQ(buffer, "aé");
    EXPECT_TRUE(CFStringGetConvertableCString(text("aé"), buffer, 3));  // another encoding needs less
    EXPECT_FALSE(CFStringGetConvertableCString(text("abc"), buffer, 3));
    EXPECT_FALSE(CFStringGetConvertableCString(text("a"), buffer, 0) ||
                 CFStringGetConvertableCString(nullptr, buffer, 8));
    unsigned char pascal[8];
    EXPECT_TRUE(CFStringGetConvertablePascalString(text("aé"), pascal, 8));
    EXPECT_EQ(std::string(pascal, pascal + 4), "\x03"
                                               "aé");
    EXPECT_FALSE(CFStringGetConvertablePascalString(text("abcdefgh"), pascal, 8));

    memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(CFStringGetASCIICString(text("éaübç"), buffer, 6), 2);
    EXPECT_EQ(std::string(buffer, 8), "ab\0\0\0\0##"s);
    EXPECT_EQ(CFStringGetASCIICString(text("abcdef"), buffer, 4), 3);
    EXPECT_EQ(CFStringGetASCIICString(text("a"), buffer, 0) + CFStringGetASCIICString(nullptr, buffer, 4), 0);
    EXPECT_EQ(taken(CFStringAllocASCIICString(text(std::string(1000, 'x') + "é"))), std::string(1000, 'x'));
}

TEST(ExternalRepresentation, IsLossyInTheSystemEncodingOnly)
{
    NSData *data = [(NSData *)CFStringCreateConvertableExternalRepresentation(text("日é")) autorelease];
    EXPECT_EQ(tarvik::bytes(data), "日é");
    // Half a pair has no UTF-8 form; UTF-16, further down the list, holds it.
    NSString *half = [tarvik::nsstring("x\U0001F600") substringToIndex:2];
    data = [(NSData *)CFStringCreateConvertableExternalRepresentation((CFStringRef)half) autorelease];
    EXPECT_EQ(tarvik::bytes(data), "\xFF\xFEx\0\x3D\xD8"s);
    EXPECT_EQ(CFStringCreateConvertableExternalRepresentation(nullptr), nullptr);
}

TEST(FileNameRecords, HoldOneToThe255Units)
{
    HFSUniStr255 record;
    static_assert(sizeof record == 512);
    EXPECT_TRUE(CFStringGetHFSUniStr255(text(std::string(255, 'n')), &record));
    EXPECT_EQ(record.length, 255);
    EXPECT_EQ(record.unicode[254], 'n');
    for (const std::string &bad : {""s, std::string(256, 'n')}) {
        EXPECT_FALSE(CFStringGetHFSUniStr255(text(bad), &record));
        EXPECT_EQ(record.length + record.unicode[0], 0);
    }
    EXPECT_FALSE(CFStringGetHFSUniStr255(nullptr, &record));
    UniChar *units = [@"ab" allocCharacters];
    EXPECT_EQ(std::u16string((const char16_t *)units), u"ab");
    free(units);
}

TEST(TextConverter, CountsAndStatusValues)
{
    Converted all = convert("é1", kCFStringEncodingMacRoman);
    EXPECT_EQ(all.bytes, "\x8E"
                         "1");
    EXPECT_EQ(all.in, 4u);
    EXPECT_EQ(all.status, noErr);
    Converted lacking = convert("ab日c", kCFStringEncodingMacRoman);
    EXPECT_EQ(lacking.bytes, "ab");
    EXPECT_EQ(lacking.in, 4u);
    EXPECT_EQ(lacking.status, kTECUnmappableElementErr);
    Converted full = convert("日本", kCFStringEncodingUTF8, 2);
    EXPECT_EQ(full.bytes, "日");
    EXPECT_EQ(full.in, 2u);
    EXPECT_EQ(full.status, kTECOutputBufferFullStatus);
    // The way back to the initial state is a flush's.
    for (const UInt32 room : {0u, 8u}) {
        const Converted shifted = convert("日本", kCFStringEncodingISO_2022_JP, room);
        EXPECT_EQ(shifted.bytes, "\x1B$BF|K\\");
        EXPECT_EQ(shifted.in, 4u);
        EXPECT_EQ(shifted.status, noErr);
    }
    EXPECT_EQ(convert("a", 0x12345678).status, kTextUnsupportedEncodingErr);
    EXPECT_EQ(convert("", kCFStringEncodingUTF8).status, noErr);
    ByteCount in = 7, out = 7;
    OSStatus status = 7;
    EXPECT_EQ(CFStringAllocTECConvertedText(nullptr, 0, 0, &in, &out, &status), nullptr);
    EXPECT_EQ(int(in + out) + status, 0);
    free(CFStringAllocTECConvertedText(text("a"), 0, 0, nullptr, nullptr, nullptr));
}

TEST(TextConverter, FromLegacyBytesAndOfBrokenOnes)
{
    auto run = [](TextEncoding from, std::string_view in, ByteCount room) {
        TECObjectRef converter = nullptr;
        Converted result{};
        EXPECT_EQ(TECCreateConverter(&converter, from, kCFStringEncodingUTF8), noErr);
        std::string buffer(room, '\0');
        result.status = TECConvertText(converter, (const UInt8 *)in.data(), ByteCount(in.size()), &result.in,
                                       (UInt8 *)buffer.data(), room, &result.out);
        result.bytes = buffer.substr(0, result.out);
        TECDisposeConverter(converter);
        return result;
    };
    EXPECT_EQ(run(kCFStringEncodingEUC_JP, "\xC6\xFC\xCB\xDC", 8).bytes, "日本");
    EXPECT_EQ(run(kCFStringEncodingEUC_JP, "\xC6\xFC\xCB\xDC", 4).in, 2u);
    EXPECT_EQ(run(kCFStringEncodingUTF8, "\xFF", 8).status, kTextMalformedInputErr);
    EXPECT_EQ(run(kCFStringEncodingUnicode, "\x00\xDE"sv, 8).status, kTextMalformedInputErr);
    EXPECT_EQ(run(kCFStringEncodingUnicode, "a\0\x3D\xD8"sv, 8).status, kTECPartialCharErr);
    EXPECT_EQ(run(kCFStringEncodingUnicode, "a\0b"sv, 8).status, kTECPartialCharErr);
    EXPECT_EQ(TECConvertText(nullptr, nullptr, 0, nullptr, nullptr, 0, nullptr), kTECCorruptConverterErr);
}

TEST(TextConverter, PascalStringsAreCut)
{
    ByteCount out = 0;
    OSStatus status = 1;
    for (size_t length : {size_t(3), size_t(255), size_t(300)}) {
        StringPtr made = CFStringAllocTECConvertedPascalString(text(std::string(length, 'x')), 0, 1, nullptr,
                                                               &out, &status);
        ASSERT_NE(made, nullptr);
        EXPECT_EQ(made[0], std::min<size_t>(length, 255));
        EXPECT_EQ(std::string(made + 1, made + 1 + made[0]), std::string(made[0], 'x'));
        EXPECT_EQ(out, length);
        EXPECT_EQ(status, noErr);
        free(made);
    }
}

TEST(EncodingMethods, PascalStringsBytesAndNames)
{
    EXPECT_TRUE([[NSString stringWithPascalString:(ConstStringPtr) "\x02"
                                                                   "a\x8E"
                                         encoding:kCFStringEncodingMacRoman] isEqual:tarvik::nsstring("aé")]);
    EXPECT_EQ([NSString stringWithPascalString:(ConstStringPtr) "\x01\xFF" encoding:kCFStringEncodingUTF8],
              nil);
    EXPECT_EQ([NSString stringWithPascalString:nullptr encoding:0], nil);
    unsigned char pascal[4];
    EXPECT_TRUE([tarvik::nsstring("aé") getPascalString:pascal size:4 encoding:kCFStringEncodingMacRoman]);
    EXPECT_EQ(pascal[0] * 256 + pascal[2], 0x28E);
    EXPECT_FALSE([@"abcd" getPascalString:pascal size:4 encoding:kCFStringEncodingMacRoman]);
    char buffer[4] = "###";
    EXPECT_TRUE([tarvik::nsstring("é") memmoveUTF8String:buffer maxLength:2]);
    EXPECT_EQ(std::string(buffer, 3), "é#");
    EXPECT_FALSE([tarvik::nsstring("é") memmoveUTF8String:buffer maxLength:1]);
    EXPECT_FALSE([@"" memmoveUTF8String:buffer maxLength:0]);

    NSArray *names = [NSString availableStringEncodingLocalizedNames];
    ASSERT_GT([names count], 10u);
    EXPECT_NE([NSString stringEncodingForLocalizedName:[names objectAtIndex:0]], 0u);
    EXPECT_EQ([NSString stringEncodingForLocalizedName:nil] +
                  [NSString stringEncodingForLocalizedName:@"No such encoding"],
              0u);
}

TEST(AppleEventText, InANamedEncoding)
{
    AEDesc desc;
    ASSERT_EQ(AECreateDesc(typeText, "\x8E\0x", 3, &desc), noErr);
    NSString *made = [(NSString *)CFStringCreateWithAEDesc(&desc, kCFStringEncodingMacRoman) autorelease];
    EXPECT_TRUE([made isEqual:tarvik::nsstring("é")]);
    EXPECT_EQ(CFStringCreateWithAEDesc(&desc, kCFStringEncodingUTF8), nullptr);
    desc.descriptorType = typeUTF8Text;
    EXPECT_EQ(CFStringCreateWithAEDesc(&desc, kCFStringEncodingUTF8), nullptr);
    AEDisposeDesc(&desc);
}

}  // namespace
