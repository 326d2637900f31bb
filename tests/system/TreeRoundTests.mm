#import <Tarvik/Tarvik.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Pool.h>
#include <gtest/gtest.h>
#include <tests/support/LoggedMessages.h>
#include <tests/support/TemporaryFolder.h>

#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <map>
#include <set>

using Evaluate = std::function<uint32_t(const std::string &)>;

@interface Evaluator : NSObject {
@public
    const void *mEvaluate;  // an Evaluate: the compiler has no encoding for it
}
@end
@implementation Evaluator
- (uint32_t)treeRoundEvaluatePath:(NSString *)path
{
    return (*static_cast<const Evaluate *>(mEvaluate))(tarvik::utf8(path).value());
}
@end

namespace {

namespace fs = std::filesystem;
using Paths = std::vector<std::string>;

class TreeRounds : public testing::Test {
protected:
    void make(const std::vector<std::string> &names) const
    {
        for (const std::string &name : names) {
            fs::create_directories((root_ / name).parent_path());
            name.ends_with('/') ? void(fs::create_directories(root_ / name)) : void(folder_.write(name, "x"));
        }
    }
    /// The paths asked about, in order, without the root before them.
    Paths round(const Paths &roots, const std::map<std::string, uint32_t> &verdicts = {}, BOOL answer = YES)
    {
        Paths asked;
        Evaluator *evaluator = [[[Evaluator alloc] init] autorelease];
        const Evaluate evaluate = [&](const std::string &path) -> uint32_t {
            EXPECT_TRUE(path.starts_with(root_.native() + "/")) << path;
            asked.push_back(path.substr(root_.native().size() + 1));
            const auto verdict = verdicts.find(asked.back());
            return verdict == verdicts.end() ? 0 : verdict->second;
        };
        evaluator->mEvaluate = &evaluate;
        NSMutableArray *paths = [NSMutableArray array];
        for (const std::string &root : roots)
            [paths addObject:tarvik::nsstring((root_ / root).native())];
        EXPECT_EQ([[[[TreeRound alloc] init] autorelease] start:paths withDelegate:evaluator], answer);
        return asked;
    }
    /// A folder's entries as the file manager lists them.
    Paths listed(const std::string &name) const
    {
        Paths paths;
        for (NSString *entry : tarvik::each<NSString>([[NSFileManager defaultManager]
                 directoryContentsAtPath:tarvik::nsstring((root_ / name).native())]))
            paths.push_back(name.empty() ? tarvik::utf8(entry).value()
                                         : name + "/" + tarvik::utf8(entry).value());
        return paths;
    }
    static void append(Paths &paths, const Paths &more)
    {
        paths.insert(paths.end(), more.begin(), more.end());
    }

    tarvik::Pool pool_;
    TemporaryFolder folder_;
    const fs::path root_ = fs::canonical(folder_.path());
};

TEST_F(TreeRounds, GoLevelByLevelInTheFileManagersOrder)
{
    make(
        {"a/one", "a/two/deep/deeper", "a/.hidden/x", "b/three/y", "b/\xC3\xA9t\xC3\xA9", "c/", "not asked"});
    Paths expected = listed("a");
    for (const char *root : {"b", "c"})
        append(expected, listed(root));
    for (const Paths level = expected; const std::string &path : level)
        append(expected, listed(path));
    append(expected, {"a/two/deep/deeper"});
    EXPECT_EQ(expected.size(), 9u);
    EXPECT_EQ(round({"a", "b", "c"}), expected);
    EXPECT_EQ(round({"a/", "missing", "b/three/y"}).size(), 6u) << "what is no folder lists nothing";
}

TEST_F(TreeRounds, FollowTheVerdicts)
{
    make({"a/1/x", "a/2/x", "a/3/x", "b/4/x", "b/5/x"});
    const Paths a = listed("a"), b = listed("b");
    const std::string first = a[0];
    EXPECT_EQ(round({"a", "b"}, {{first, 0x100}}), Paths({first}));
    EXPECT_EQ(round({"a", "b"}, {{first, 0x102}}), Paths({first})) << "the stop is looked at first";
    EXPECT_EQ(round({"a", "b"}, {{first, 2}}), Paths({first, b[0], b[1], b[0] + "/x", b[1] + "/x"}))
        << "the rest of a, and what it begins with";
    EXPECT_EQ(round({"a", "b"}, {{a[1], 3}}),
              Paths({first, a[1], b[0], b[1], first + "/x", b[0] + "/x", b[1] + "/x"}));
    for (const uint32_t skip : {1u, 4u, 0x80u, 0x200u, 0x80000000u})
        EXPECT_EQ(round({"a"}, {{first, skip}}), Paths({first, a[1], a[2], a[1] + "/x", a[2] + "/x"}))
            << skip;
    // A stop in the second level, after the whole of the first.
    EXPECT_EQ(round({"a"}, {{first + "/x", 0x100}}), Paths({first, a[1], a[2], first + "/x"}));
}

TEST_F(TreeRounds, EndWhereLinksMakeRings)
{
    make({"a/file", "a/sub/inner", "other/far/away"});
    fs::create_symlink(".", root_ / "a/self");
    fs::create_symlink("../..", root_ / "a/sub/up");
    fs::create_symlink("loop", root_ / "a/loop");
    fs::create_symlink("../other/far", root_ / "a/away");
    fs::create_symlink("../other", root_ / "a/elsewhere");
    fs::create_symlink("../../a", root_ / "other/far/back");
    fs::create_symlink("a", root_ / "as link");
    Paths asked = round({"a"});
    // Each link is asked about; a link to a folder leads into it, once the round isn't inside of that already.
    for (const char *path : {"a/self", "a/loop", "a/sub/up", "a/sub/up/other", "a/away/away", "a/away/back",
                             "a/elsewhere/far/away", "a/elsewhere/far/back"})
        EXPECT_EQ(std::count(asked.begin(), asked.end(), path), 1) << path;
    EXPECT_EQ(std::set<std::string>(asked.begin(), asked.end()).size(), asked.size());
    for (const char *path : {"a/self/file", "a/loop/file", "a/away/back/file", "a/elsewhere/far/back/file"})
        EXPECT_EQ(std::count(asked.begin(), asked.end(), path), 0) << path;
    EXPECT_EQ(round({"as link"}).size(), asked.size()) << "a root that is a link itself";
}

TEST_F(TreeRounds, StayLinearWhereLinksMultiply)
{
    for (int i = 0; i < 20; ++i) {
        const fs::path here = root_ / std::to_string(i);
        fs::create_directory(here);
        fs::create_symlink("../" + std::to_string(i + 1), here / "left");
        fs::create_symlink("../" + std::to_string(i + 1), here / "right");
    }
    EXPECT_LT(round({"0"}).size(), 20u * 2 * 64) << "2 to the power of 20 ways lead to the last one";
}

TEST_F(TreeRounds, RefuseWhatTheyCantDo)
{
    make({"a/x"});
    TreeRound *const tree = [[[TreeRound alloc] init] autorelease];
    Evaluator *const evaluator = [[[Evaluator alloc] init] autorelease];
    NSArray *const roots = [NSArray arrayWithObject:tarvik::nsstring((root_ / "a").native())];
    EXPECT_FALSE([tree start:nil withDelegate:evaluator]);
    EXPECT_FALSE([tree start:[NSArray array] withDelegate:evaluator]);
    EXPECT_FALSE([tree start:roots withDelegate:nil]);
    EXPECT_FALSE([tree start:roots withDelegate:@"no delegate"]);
    const LoggedMessages logged;
    const Evaluate raising = [](const std::string &) -> uint32_t {
        return [NSException raise:@"Sick" format:@"of %@", @"it"], 0;
    };
    evaluator->mEvaluate = &raising;
    EXPECT_FALSE([tree start:roots withDelegate:evaluator]);
    ASSERT_EQ(logged.count(), 1u);
    EXPECT_EQ(logged[0],
              "-[TreeRound start:withDelegate:]:56: unexpected exception: name[Sick] reason[of it]");
}

}  // namespace
