// Alias records and alias files, over real files that are renamed, moved, replaced and deleted.
#include <Carbon/Aliases.h>
#include <gtest/gtest.h>
#include <tests/support/Namespace.h>
#include <tests/support/TemporaryFolder.h>

#include <climits>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <sys/mount.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

FSRef reference(const std::string &path)
{
    FSRef ref = {};
    EXPECT_EQ(FSPathMakeRefWithOptions(reinterpret_cast<const UInt8 *>(path.c_str()),
                                       kFSPathMakeRefDoNotFollowLeafSymlink, &ref, nullptr),
              noErr)
        << path;
    return ref;
}
std::string path(const FSRef &ref)
{
    UInt8 room[PATH_MAX + 1] = {};
    EXPECT_EQ(FSRefMakePath(&ref, room, sizeof room), noErr);
    return reinterpret_cast<char *>(room);
}

struct Disposed {
    void operator()(AliasHandle alias) const { DisposeHandle(reinterpret_cast<Handle>(alias)); }
};
using Alias = std::unique_ptr<std::remove_pointer_t<AliasHandle>, Disposed>;

Alias aliasTo(const std::string &target, const std::string &from = "")
{
    const FSRef ref = reference(target);
    const FSRef start = from.empty() ? ref : reference(from);
    AliasHandle alias = nullptr;
    EXPECT_EQ(FSNewAlias(from.empty() ? nullptr : &start, &ref, &alias), noErr);
    return Alias(alias);
}
Alias aliasOf(const std::string &record)
{
    Handle handle = nullptr;
    PtrToHand(record.data(), &handle, Size(record.size()));
    return Alias(reinterpret_cast<AliasHandle>(handle));
}
std::string record(const Alias &alias)
{
    return {reinterpret_cast<const char *>(*alias.get()), size_t(GetAliasSize(alias.get()))};
}

struct Found {
    OSErr error;
    std::string path;
    bool changed;
    bool operator==(const Found &) const = default;
};
std::ostream &operator<<(std::ostream &out, const Found &found)
{
    return out << found.error << ' ' << found.path << (found.changed ? " changed" : "");
}

Found resolve(const Alias &alias, const std::string &from = "")
{
    FSRef target = {};
    Boolean changed = false;
    const FSRef start = from.empty() ? FSRef() : reference(from);
    const OSErr error = FSResolveAlias(from.empty() ? nullptr : &start, alias.get(), &target, &changed);
    return {error, error ? "" : path(target), changed != 0};
}

/// Root asks the kernel for the item itself; everybody else has to search. Both must find.
class Aliases : public testing::TestWithParam<bool> {
protected:
    void SetUp() override
    {
        if (GetParam() && geteuid() != 0)
            GTEST_SKIP() << "only root may open by handle";
        fs::create_directories(root_ / "old/deep");
        folder_.write("old/deep/report", "a report");
        if (!GetParam()) {
            ASSERT_TRUE(giveUpRootsAccess());
        }
    }
    std::string at(const std::string &name) const { return root_ / name; }

    TemporaryFolder folder_;
    const fs::path root_ = fs::canonical(folder_.path());
};
INSTANTIATE_TEST_SUITE_P(, Aliases, testing::Bool(),
                         [](const auto &info) { return info.param ? "AsRoot" : "AsUser"; });

TEST_P(Aliases, AreFoundAgain)
{
    struct Case {
        const char *what;
        std::function<void()> change;
        std::string found;
    };
    const Case cases[] = {
        {"in place", [] {}, "old/deep/report"},
        {"renamed", [&] { fs::rename(at("old/deep/report"), at("old/deep/summary")); }, "old/deep/summary"},
        {"moved up", [&] { fs::rename(at("old/deep/summary"), at("summary")); }, "summary"},
        {"moved into another folder",
         [&] {
             fs::create_directories(at("new/x/y/z"));
             fs::rename(at("summary"), at("new/x/y/z/report"));
         },
         "new/x/y/z/report"},
        {"a folder far above renamed", [&] { fs::rename(at("new"), at("newer")); }, "newer/x/y/z/report"},
        {"replaced by a save",
         [&] {
             folder_.write("newer/x/y/z/fresh", "again");
             fs::rename(at("newer/x/y/z/fresh"), at("newer/x/y/z/report"));
         },
         "newer/x/y/z/report"},
        {"replaced in a renamed folder",
         [&] {
             fs::rename(at("newer/x/y/z"), at("newer/x/y/zz"));
             fs::remove(at("newer/x/y/zz/report"));
             folder_.write("newer/x/y/zz/report", "put back");
         },
         "newer/x/y/zz/report"},
    };
    const Alias alias = aliasTo(at("old/deep/report"));
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        c.change();
        const bool changes = c.what != cases[0].what;
        EXPECT_EQ(resolve(alias), (Found{noErr, at(c.found), changes}));
        EXPECT_EQ(resolve(aliasOf(record(alias))), (Found{noErr, at(c.found), false}))
            << "the record was renewed";
    }
    // Gone: the folder is still there, then neither.
    fs::remove(at("newer/x/y/zz/report"));
    folder_.write("old/report", "another file of the name");
    EXPECT_EQ(resolve(alias).error, fnfErr);
    fs::remove_all(at("newer"));
    EXPECT_EQ(resolve(alias).error, dirNFErr);
}

TEST_P(Aliases, OfFoldersLinksHardLinksAndLongNames)
{
    const Alias folder = aliasTo(at("old")), root = aliasTo("/");
    fs::create_symlink("report", at("old/deep/link"));
    fs::create_hard_link(at("old/deep/report"), at("old/deep/twin"));
    const Alias link = aliasTo(at("old/deep/link")), twin = aliasTo(at("old/deep/twin"));
    const std::string name(255, 'n'), odd = "b\xFFyte\n\\'\"";
    folder_.write("old/" + name, "x");
    folder_.write("old/" + odd, "x");
    const Alias named = aliasTo(at("old/" + name)), oddly = aliasTo(at("old/" + odd));
    fs::rename(at("old"), at("moved"));
    EXPECT_EQ(resolve(root), (Found{noErr, "/", false}));
    EXPECT_EQ(resolve(folder), (Found{noErr, at("moved"), true}));
    EXPECT_EQ(resolve(link), (Found{noErr, at("moved/deep/link"), true})) << "the link, not its target";
    EXPECT_EQ(resolve(twin), (Found{noErr, at("moved/deep/twin"), true}))
        << "of two names the one that was meant";
    EXPECT_EQ(resolve(named), (Found{noErr, at("moved/" + name), true}));
    EXPECT_EQ(resolve(oddly), (Found{noErr, at("moved/" + odd), true}));

    fs::path deep = root_;
    while (deep.native().size() < 3800)
        fs::create_directory(deep /= std::string(199, 'd'));
    deep /= "file";
    std::ofstream(deep) << "x";
    const Alias far = aliasTo(deep);
    fs::rename(deep, deep.parent_path() / "renamed");
    EXPECT_EQ(resolve(far), (Found{noErr, deep.parent_path() / "renamed", true}));
}

TEST_P(Aliases, RelativeOnesFollowTheirStartingFile)
{
    folder_.write("old/start", "");
    const Alias alias = aliasTo(at("old/deep/report"), at("old/start"));
    fs::copy(at("old"), at("copy"), fs::copy_options::recursive);
    EXPECT_EQ(resolve(alias, at("copy/start")).path, at("copy/deep/report"));
    EXPECT_EQ(resolve(aliasTo(at("old/deep/report"), at("old/start"))).path, at("old/deep/report"))
        << "without it, by path";
    fs::remove_all(at("copy/deep"));
    EXPECT_EQ(resolve(aliasTo(at("old/deep/report"), at("old/start")), at("copy/start")).path,
              at("old/deep/report"));
}

TEST_P(Aliases, UnreadableFoldersAreSearchedAround)
{
    if (GetParam())
        GTEST_SKIP() << "root may search every folder";
    fs::create_directory(at("locked"));
    const Alias alias = aliasTo(at("old/deep/report"));
    fs::create_directory(at("other"));
    fs::rename(at("old/deep/report"), at("other/report2"));
    fs::permissions(at("locked"), fs::perms::none);
    EXPECT_EQ(resolve(alias).path, at("other/report2"));
    fs::permissions(at("other"), fs::perms::none);
    EXPECT_EQ(resolve(alias).error, afpAccessDenied);
    fs::permissions(at("locked"), fs::perms::all);
    fs::permissions(at("other"), fs::perms::all);
}

TEST(AliasVolumes, AreFoundWhereverTheyAreMounted)
{
    if (!enterPrivateMounts())
        GTEST_SKIP() << "no mount namespace here";
    TemporaryFolder folder;
    const fs::path root = fs::canonical(folder.path());
    for (const char *name : {"disk", "elsewhere", "other", "part"})
        fs::create_directory(root / name);
    auto mounted = [&](const char *place) {
        return mount("tmpfs", (root / place).c_str(), "tmpfs", 0, "size=1m");
    };
    ASSERT_EQ(mounted("disk"), 0);
    fs::create_directory(root / "disk/sub");
    folder.write("disk/sub/file", "x");
    const Alias alias = aliasTo(root / "disk/sub/file");

    ASSERT_EQ(mount((root / "disk").c_str(), (root / "elsewhere").c_str(), nullptr, MS_MOVE, nullptr), 0);
    EXPECT_EQ(resolve(aliasOf(record(alias))), (Found{noErr, root / "elsewhere/sub/file", true}));
    // Another volume, in its old place, with a file of its name: ours comes first.
    ASSERT_EQ(mounted("disk"), 0);
    fs::create_directory(root / "disk/sub");
    folder.write("disk/sub/file", "another");
    EXPECT_EQ(resolve(aliasOf(record(alias))).path, root / "elsewhere/sub/file");
    // Only a part of it can be reached, then nothing.
    ASSERT_TRUE(bindMount(root / "elsewhere/sub", root / "part"));
    fs::rename(root / "elsewhere/sub/file", root / "elsewhere/sub/renamed");
    umount2((root / "disk").c_str(), MNT_DETACH);
    umount2((root / "elsewhere").c_str(), MNT_DETACH);
    EXPECT_EQ(resolve(aliasOf(record(alias))).path, root / "part/renamed");
    umount2((root / "part").c_str(), MNT_DETACH);
    EXPECT_EQ(resolve(alias).error, nsvErr);
}

TEST(AliasRecords, FailWhenDamaged)
{
    TemporaryFolder folder;
    const std::string file = folder.write("file", "x");
    const std::string good = record(aliasTo(file));
    for (size_t at = 4; at < good.size(); ++at) {  // the first four bytes are the application's
        std::string bad = good;
        bad[at] ^= 0x10;
        EXPECT_EQ(resolve(aliasOf(bad)).error, paramErr) << at;
        EXPECT_EQ(resolve(aliasOf(good.substr(0, at))).error, paramErr) << at;
    }
    EXPECT_EQ(resolve(aliasOf(good + "trailing")).error, noErr) << "its own length counts";
    EXPECT_EQ(resolve(aliasOf("")).error, paramErr);
    FSRef ref = reference(file);
    Boolean changed = true;
    const Alias alias = aliasTo(file);
    EXPECT_EQ(FSUpdateAlias(nullptr, &ref, alias.get(), &changed), noErr);
    EXPECT_FALSE(changed);
    ref = reference(folder.path());
    EXPECT_EQ(FSUpdateAlias(nullptr, &ref, alias.get(), &changed), noErr);
    EXPECT_TRUE(changed);
    EXPECT_EQ(resolve(alias).path, fs::canonical(folder.path()));
    fs::remove(file);
    AliasHandle none;
    ref = {};
    EXPECT_EQ(FSNewAlias(nullptr, &ref, &none), errFSBadFSRef);
    EXPECT_EQ(FSNewAlias(nullptr, nullptr, &none), paramErr);
}

TEST(AliasFiles, LeadToTheirTargets)
{
    TemporaryFolder folder;
    const fs::path root = fs::canonical(folder.path());
    fs::create_directory(root / "a b");
    folder.write("a b/é", "x");
    folder.write("entry.desktop",
                 "[Desktop Entry]\nType=Link\nName=x\nURL=file://" + root.string() + "/a%20b/%C3%A9\n");
    folder.write("web.desktop", "[Desktop Entry]\nType=Link\nURL=http://localhost/\n");
    folder.write("app.desktop", "[Desktop Entry]\nType=Application\nURL=file:///etc\nExec=true\n");
    folder.write("broken.desktop", "[Desktop Ent");
    const std::map<std::string, std::string> links = {
        {"one", "a b"},    {"chain", "chain2"}, {"chain2", "entry.desktop"},
        {"loop", "loop2"}, {"loop2", "loop"},   {"gone", "nothing"}};
    for (const auto &[name, target] : links)
        fs::create_symlink(target, root / name);

    struct Case {
        const char *name;
        OSErr error;
        std::string target;
        bool aliased, chain;
    };
    const Case cases[] = {
        {"one", noErr, "a b", true, true},
        {"entry.desktop", noErr, "a b/é", true, true},
        {"chain", noErr, "a b/é", true, true},
        {"chain", noErr, "chain2", true, false},
        {"a b", noErr, "a b", false, true},
        {"web.desktop", noErr, "web.desktop", false, true},
        {"app.desktop", noErr, "app.desktop", false, true},
        {"broken.desktop", noErr, "broken.desktop", false, true},
        {"loop", bdNamErr, "loop", false, true},
        {"loop", noErr, "loop2", true, false},
        {"gone", fnfErr, "gone", false, true},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        FSRef ref = reference(root / c.name);
        Boolean isFolder = true, aliased = false, flag = false, folderFlag = false;
        EXPECT_EQ(FSIsAliasFile(&ref, &flag, &folderFlag), noErr);
        EXPECT_EQ(FSResolveAliasFile(&ref, c.chain, &isFolder, &aliased), c.error);
        EXPECT_EQ(path(ref), root / c.target);
        EXPECT_EQ(bool(aliased), c.aliased);
        if (c.error == noErr) {
            EXPECT_EQ(bool(flag), c.aliased);
            EXPECT_EQ(bool(isFolder), fs::is_directory(fs::symlink_status(root / c.target)));
        }
    }
}

}  // namespace
