#include "../support/TemporaryFolder.h"

#include <Carbon/Resources.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

using namespace std::literals;

namespace {

constexpr ResType kText = 0x54455854, kVersion = 0x76657273;  // 'TEXT', 'vers'
constexpr SInt8 kRead = 1, kWrite = 3;

// A fork made byte by byte as the published format has it: one 'TEXT' 128 named "hi" and one 'vers' 1.
std::string madeByHand()
{
    const std::string data = "\0\0\0\5hello"s + "\0\0\0\12"s +
                             "\x01\x23\x80\x00\x00\x0E\x01"
                             "a"
                             "\x01"
                             "b"s;
    const std::string types = "\0\1"s + "TEXT\0\0\0\x12"s + "vers\0\0\0\x1E"s;
    const std::string references = "\0\x80\0\0\0\0\0\0\0\0\0\0"s + "\0\1\xFF\xFF\x08\0\0\x09\0\0\0\0"s;
    const std::string names = "\2hi"s;
    auto word = [](size_t value) {
        return std::string{char(value >> 24), char(value >> 16), char(value >> 8), char(value)};
    };
    const size_t mapLength = 28 + types.size() + references.size() + names.size();
    const std::string header = word(256) + word(256 + data.size()) + word(data.size()) + word(mapLength);
    const std::string lists = "\0\x1C"s + "\0"s + char(28 + types.size() + references.size());
    return header + std::string(240, '\0') + data + header + std::string(8, '\0') + lists + types +
           references + names;
}

class Resources : public testing::Test {
protected:
    ResFileRefNum open(const std::string &path, SInt8 permission)
    {
        FSRef ref;
        EXPECT_EQ(FSPathMakeRef(reinterpret_cast<const UInt8 *>(path.c_str()), &ref, nullptr), noErr);
        ResFileRefNum number = 77;
        error_ = FSOpenResourceFile(&ref, 0, nullptr, permission, &number);
        return number;
    }
    static std::string text(Handle handle)
    {
        return handle ? std::string(*handle, size_t(GetHandleSize(handle))) : "(none)";
    }

    TemporaryFolder folder_;
    OSErr error_ = noErr;
};

TEST_F(Resources, ReadsThePublishedFormat)
{
    const ResFileRefNum file = open(folder_.write("a", madeByHand()), kRead);
    ASSERT_EQ(error_, noErr);
    EXPECT_EQ(CurResFile(), file);
    EXPECT_EQ(Count1Types(), 2);
    Handle greeting = Get1Resource(kText, 128);
    EXPECT_EQ(text(greeting), "hello");
    EXPECT_EQ(Get1Resource(kText, 128), greeting);  // loaded once
    Str255 name;
    ResID number;
    ResType type;
    GetResInfo(greeting, &number, &type, name);
    EXPECT_TRUE(number == 128 && type == kText && name[0] == 2 && name[1] == 'h');
    EXPECT_EQ(Get1NamedResource(kText, reinterpret_cast<ConstStr255Param>("\2hi")), greeting);
    // A version stands in this processor's order.
    EXPECT_EQ(text(Get1Resource(kVersion, 1)), "\x00\x80\x23\x01\x0E\x00\x01"
                                               "a"
                                               "\x01"
                                               "b"s);
    EXPECT_EQ(GetResAttrs(Get1Resource(kVersion, 1)), resProtected);
    EXPECT_EQ(Get1Resource(kText, 129), nullptr);
    EXPECT_EQ(ResError(), resNotFound);
    ChangedResource(greeting);
    UpdateResFile(file);
    EXPECT_EQ(ResError(), permErr);  // opened to read
    CloseResFile(file);
    EXPECT_EQ(CurResFile(), -1);
    EXPECT_EQ(folder_.read("a"), madeByHand());
}

TEST_F(Resources, WritesWhatItReads)
{
    const std::string path = folder_.write("a", madeByHand());
    ResFileRefNum file = open(path, kWrite);
    Handle greeting = Get1Resource(kText, 128);
    SetHandleSize(greeting, 3);
    ChangedResource(greeting);
    Handle added = nullptr;
    PtrToHand("\x03\x80\x45\x10\x00\x00\x00\x00", &added, 8);
    AddResource(added, kVersion, 2, nullptr);
    EXPECT_EQ(ResError(), noErr);
    AddResource(added, kVersion, 3, nullptr);
    EXPECT_EQ(ResError(), addResFailed);
    ChangedResource(Get1Resource(kVersion, 1));
    EXPECT_EQ(ResError(), resAttrErr);  // protected
    CloseResFile(file);
    EXPECT_EQ(ResError(), noErr);

    file = open(path, kWrite);
    EXPECT_EQ(text(Get1Resource(kText, 128)), "hel");
    EXPECT_EQ(text(Get1Resource(kVersion, 2)), "\x03\x80\x45\x10\x00\x00\x00\x00"s);
    EXPECT_NE(folder_.read("a").find("\x10\x45\x80\x03"s), std::string::npos);  // big-endian in the file
    Handle gone = Get1Resource(kText, 128);
    RemoveResource(gone);
    DisposeHandle(gone);
    CloseResFile(file);
    file = open(path, kRead);
    EXPECT_EQ(Count1Resources(kText), 0);
    EXPECT_EQ(Count1Resources(kVersion), 2);
    CloseResFile(file);
}

TEST_F(Resources, TheChainIsSearchedFromTheCurrentFileOn)
{
    const ResFileRefNum below = open(folder_.write("below", madeByHand()), kRead);
    const ResFileRefNum above = open(folder_.write("above", ""), kRead);
    EXPECT_EQ(Get1Resource(kText, 128), nullptr);
    Handle found = GetResource(kText, 128);
    EXPECT_EQ(HomeResFile(found), below);
    CloseResFile(above);
    EXPECT_EQ(CurResFile(), below);
    UseResFile(above);
    EXPECT_EQ(ResError(), resFNotFound);
    DetachResource(found);
    CloseResFile(below);
    EXPECT_EQ(text(found), "hello");  // the caller's own now
    DisposeHandle(found);
}

// Every byte of the header and the map changed, and every length cut: refused or read, never read beyond.
TEST_F(Resources, AMapThatLiesRefusesTheFile)
{
    const std::string good = madeByHand();
    size_t refused = 0;
    for (size_t at = 0; at < good.size(); ++at) {
        if (at == 16)
            at = 256;
        for (int value : {0x00, 0x7F, 0xFF}) {
            std::string bad = good;
            bad[at] = char(value);
            const ResFileRefNum file = open(folder_.write("bad", bad), kRead);
            EXPECT_EQ(error_ == noErr, file != -1);
            EXPECT_TRUE(error_ == noErr || error_ == mapReadErr) << error_;
            refused += error_ != noErr;
            CloseResFile(file);
        }
    }
    EXPECT_GT(refused, 60u);
    for (size_t length = 1; length < good.size(); ++length) {
        open(folder_.write("short", good.substr(0, length)), kRead);
        EXPECT_EQ(error_, mapReadErr) << length;
    }
}

}  // namespace
