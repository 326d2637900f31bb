#include "../support/Namespace.h"
#include "../support/Program.h"
#include "../support/TemporaryFolder.h"

#include <Carbon/FileOperations.h>
#include <CoreFoundation/CFNumber.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <map>
#include <set>

namespace {

namespace fs = std::filesystem;

FSRef refOf(const std::string &path)
{
    FSRef ref{};
    EXPECT_EQ(FSPathMakeRefWithOptions(reinterpret_cast<const UInt8 *>(path.c_str()),
                                       kFSPathMakeRefDoNotFollowLeafSymlink, &ref, nullptr),
              noErr)
        << path;
    return ref;
}
std::string pathOf(const FSRef &ref)
{
    UInt8 path[4096];
    return FSRefMakePath(&ref, path, sizeof path) == noErr ? reinterpret_cast<const char *>(path) : "none";
}
OSStatus copy(const std::string &source, const std::string &folder, CFStringRef name, OptionBits options,
              FSRef *target = nullptr)
{
    const FSRef from = refOf(source), into = refOf(folder);
    return FSCopyObjectSync(&from, &into, name, target, options);
}
void putResources(const std::string &path, const std::string &bytes)
{
    const FSRef file = refOf(path);
    HFSUniStr255 name;
    FSIORefNum fork;
    FSGetResourceForkName(&name);
    ASSERT_EQ(FSOpenFork(&file, name.length, name.unicode, fsWrPerm, &fork), noErr);
    EXPECT_EQ(FSWriteFork(fork, fsFromStart, 0, bytes.size(), bytes.data(), nullptr), noErr);
    EXPECT_EQ(FSCloseFork(fork), noErr);
}
UInt64 resourceSize(const std::string &path)
{
    const FSRef file = refOf(path);
    FSCatalogInfo info{};
    EXPECT_EQ(FSGetCatalogInfo(&file, kFSCatInfoRsrcSizes, &info, nullptr, nullptr, nullptr), noErr);
    return info.rsrcLogicalSize;
}
std::set<std::string> names(const fs::path &folder)
{
    std::set<std::string> all;
    for (const auto &entry : fs::directory_iterator(folder))
        all.insert(entry.path().filename());
    return all;
}
using Names = std::set<std::string>;

class FileOperations : public testing::Test {
protected:
    void SetUp() override
    {
        fs::create_directories(top_ / "sub/empty");
        fs::create_directory(root_ / "to");
        folder_.write("top/file", "contents");
        folder_.write("top/sub/deep", std::string(100000, 'd'));
        fs::create_symlink("nowhere", top_ / "sub/link");
        putResources(top_ / "file", "resources");
        fs::permissions(top_ / "sub", fs::perms(0550));
        fs::last_write_time(top_ / "sub", fs::file_time_type::clock::now() - std::chrono::hours(1000));
    }
    void expectCopy(const fs::path &copy) const
    {
        EXPECT_EQ(runProgram({"diff", "-r", "--no-dereference", top_, copy}).out, "");
        EXPECT_EQ(resourceSize(copy / "file"), 9u);
        EXPECT_EQ(fs::status(copy / "sub").permissions(), fs::perms(0550));
        EXPECT_EQ(fs::last_write_time(copy / "sub"), fs::last_write_time(top_ / "sub"));
    }

    TemporaryFolder folder_;
    const fs::path root_ = fs::canonical(folder_.path()), top_ = root_ / "top", to_ = root_ / "to";
};

TEST_F(FileOperations, CopyWholeItems)
{
    FSRef target;
    EXPECT_EQ(copy(top_, to_, nullptr, 0, &target), noErr);
    EXPECT_EQ(pathOf(target), (to_ / "top").native());
    expectCopy(to_ / "top");
    EXPECT_EQ(copy(top_ / "file", to_, CFSTR("other/name"), 0, &target), noErr);
    EXPECT_EQ(pathOf(target), (to_ / "other:name").native());
    EXPECT_EQ(resourceSize(to_ / "other:name"), 9u);
    EXPECT_EQ(copy(top_ / "sub/link", to_, nullptr, 0), noErr);
    EXPECT_EQ(fs::read_symlink(to_ / "link"), "nowhere");

    // A name that is taken: by a file with resources, by a folder.
    folder_.write("plain", "plain");
    for (const std::string name : {"other:name", "top", "link"}) {
        const FSRef file = refOf(root_ / "plain"), into = refOf(to_);
        CFStringRef text = CFStringCreateWithCString(
            nullptr, name == "other:name" ? "other/name" : name.c_str(), kCFStringEncodingUTF8);
        EXPECT_EQ(FSCopyObjectSync(&file, &into, text, nullptr, 0), dupFNErr);
        EXPECT_TRUE(name == "top" ? fs::is_directory(to_ / name) : folder_.read("to/" + name) != "plain")
            << "was left alone";
        EXPECT_EQ(FSCopyObjectSync(&file, &into, text, nullptr, kFSFileOperationOverwrite), noErr);
        CFRelease(text);
        EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(to_ / name)));
        EXPECT_EQ(folder_.read("to/" + name), "plain");
        EXPECT_EQ(resourceSize(to_ / name), 0u) << "those of the one before";
    }
    EXPECT_EQ(copy(top_, to_, nullptr, kFSFileOperationOverwrite), noErr) << "a folder in place of a file";
    expectCopy(to_ / "top");
    EXPECT_EQ(names(to_), (Names{"top", "other:name", "link"}));
}

TEST_F(FileOperations, ThatFailLeaveNothing)
{
    fs::create_directory(to_ / "top");
    folder_.write("to/top/old", "old");
    EXPECT_EQ(copy(top_, top_ / "sub", nullptr, 0), badMovErr);
    EXPECT_EQ(copy(top_, root_, nullptr, kFSFileOperationOverwrite), dupFNErr) << "itself";
    EXPECT_EQ(copy(top_ / "file", root_, CFSTR("top"), kFSFileOperationOverwrite), dupFNErr)
        << "what holds it";
    EXPECT_EQ(copy(top_, top_ / "file", nullptr, 0), errFSNotAFolder);
    EXPECT_EQ(copy(top_, to_, CFSTR(""), 0), errFSMissingName);
    const FSRef ref = refOf(top_);
    EXPECT_EQ(FSCopyObjectSync(nullptr, &ref, nullptr, nullptr, 0), paramErr);
    EXPECT_EQ(FSCopyObjectSync(&ref, nullptr, nullptr, nullptr, 0), paramErr);
    ASSERT_EQ(mkfifo((top_ / "sub/empty/fifo").c_str(), 0600), 0);
    EXPECT_EQ(copy(top_, to_, nullptr, kFSFileOperationOverwrite), notAFileErr);
    fs::remove(top_ / "sub/empty/fifo");
    EXPECT_EQ(names(to_), Names{"top"});
    EXPECT_EQ(folder_.read("to/top/old"), "old");
    EXPECT_EQ(names(root_), (Names{"top", "to"}));

    fs::permissions(top_ / "sub/deep", fs::perms::none);
    ASSERT_TRUE(giveUpRootsAccess());
    EXPECT_EQ(copy(top_, to_, CFSTR("part"), 0), afpAccessDenied);
    EXPECT_EQ(copy(top_, to_, CFSTR("part"), kFSFileOperationSkipSourcePermissionErrors), noErr);
    EXPECT_EQ(names(to_ / "part/sub"), (Names{"empty", "link"}));
    for (const fs::path &sub : {top_ / "sub", to_ / "part/sub"})
        fs::permissions(sub, fs::perms::owner_all);
}

/// What the status function was told.
struct Told {
    std::vector<FSFileOperationStage> stages;
    std::map<std::string, int64_t> last;
    OSStatus error = 1;
    std::string item;
    int references = 1;

    static void tell(FSFileOperationRef, const FSRef *item, FSFileOperationStage stage, OSStatus error,
                     CFDictionaryRef status, void *info)
    {
        auto &told = *static_cast<Told *>(info);
        told.stages.push_back(stage);
        told.error = error;
        told.item = pathOf(*item);
        if (stage == kFSOperationStageComplete)
            CFRunLoopStop(CFRunLoopGetCurrent());
        for (CFStringRef key :
             {kFSOperationTotalBytesKey, kFSOperationBytesCompleteKey, kFSOperationBytesRemainingKey,
              kFSOperationTotalObjectsKey, kFSOperationObjectsCompleteKey}) {
            char text[64];
            CFStringGetCString(key, text, sizeof text, kCFStringEncodingUTF8);
            CFNumberGetValue(static_cast<CFNumberRef>(CFDictionaryGetValue(status, key)), kCFNumberSInt64Type,
                             &told.last[text]);
        }
    }
    bool isOver() const { return !stages.empty() && stages.back() == kFSOperationStageComplete; }
    FSFileOperationClientContext context()
    {
        return {0, this,
                [](const void *info) {
                    ++const_cast<Told *>(static_cast<const Told *>(info))->references;
                    return info;
                },
                [](const void *info) { --const_cast<Told *>(static_cast<const Told *>(info))->references; },
                nullptr};
    }
};

TEST_F(FileOperations, InTheBackgroundTellTheRunLoop)
{
    const FSRef from = refOf(top_), into = refOf(to_);
    for (const bool isCancelled : {false, true}) {
        Told told;
        const auto context = told.context();
        const FSFileOperationRef operation = FSFileOperationCreate(nullptr);
        FSFileOperationStage stage = 9;
        EXPECT_EQ(FSFileOperationCopyStatus(operation, nullptr, &stage, nullptr, nullptr, nullptr), noErr);
        EXPECT_EQ(stage, UInt32(kFSOperationStageUndefined));
        EXPECT_EQ(FSFileOperationScheduleWithRunLoop(operation, CFRunLoopGetCurrent(), kCFRunLoopDefaultMode),
                  noErr);
        if (isCancelled) {
            EXPECT_EQ(FSFileOperationCancel(operation), noErr);
        }
        CFStringRef name = isCancelled ? CFSTR("cancelled") : CFSTR("copy");
        ASSERT_EQ(FSCopyObjectAsync(operation, &from, &into, name, 0, Told::tell, 0.01, &context), noErr);
        EXPECT_EQ(FSCopyObjectAsync(operation, &from, &into, name, 0, Told::tell, 0.01, &context), paramErr)
            << "one copy";
        EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 600, false), kCFRunLoopRunStopped)
            << "and at once";
        ASSERT_TRUE(told.isOver());
        const size_t calls = told.stages.size();
        CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.1, false);
        EXPECT_EQ(told.stages.size(), calls) << "the end is told of once";

        OSStatus error = 1;
        CFDictionaryRef status = nullptr;
        void *info = nullptr;
        EXPECT_EQ(FSFileOperationCopyStatus(operation, nullptr, nullptr, &error, &status, &info), noErr);
        EXPECT_EQ(error, told.error);
        EXPECT_EQ(info, &told);
        CFRelease(status);
        CFRelease(operation);
        EXPECT_EQ(told.references, 1);
        if (isCancelled) {
            EXPECT_EQ(told.error, userCanceledErr);
            continue;
        }
        EXPECT_EQ(told.error, noErr);
        EXPECT_EQ(told.item, (to_ / "copy").native());
        EXPECT_EQ(told.last["kFSOperationTotalObjectsKey"], 7) << "the companion is one";
        EXPECT_EQ(told.last["kFSOperationObjectsCompleteKey"], 7);
        EXPECT_GT(told.last["kFSOperationTotalBytesKey"], 100000);
        EXPECT_EQ(told.last["kFSOperationBytesCompleteKey"], told.last["kFSOperationTotalBytesKey"]);
        EXPECT_EQ(told.last["kFSOperationBytesRemainingKey"], 0);
        expectCopy(to_ / "copy");
    }
    EXPECT_EQ(names(to_), Names{"copy"});

    // Nobody has to listen, or to keep it.
    const FSFileOperationRef operation = FSFileOperationCreate(nullptr);
    ASSERT_EQ(FSCopyObjectAsync(operation, &from, &into, CFSTR("alone"), 0, nullptr, 0, nullptr), noErr);
    CFRelease(operation);
    for (int tries = 0; tries < 6000 && !fs::exists(to_ / "alone"); ++tries)
        usleep(10000);
    expectCopy(to_ / "alone");
}

TEST_F(FileOperations, KnowAFullDisk)
{
    if (!enterPrivateMounts() || mount("none", to_.c_str(), "tmpfs", 0, "size=256k") != 0)
        GTEST_SKIP() << "no mount namespace here";
    folder_.write("top/large", std::string(2 << 20, 'l'));
    EXPECT_EQ(copy(top_, to_, nullptr, 0), dskFulErr);
    EXPECT_EQ(names(to_), Names{});
    umount2(to_.c_str(), MNT_DETACH);
}

}  // namespace
