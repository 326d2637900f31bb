#include <Tarvik/core/Guard.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Pool.h>
#import <Tarvik/support/Retained.h>
#import <Tarvik/system/TreeRound.h>
#import <system/private/PathBytes.h>

#include <Carbon/FileTrees.h>
#include <Carbon/Files.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace {

constexpr unsigned kMostVisits = 64;    // of one folder, by links
constexpr unsigned kPooledPaths = 512;  // before they are let go

/// Where a path really leads: by which link, or which root, the round came there. Below that, names are the folders' own.
struct Route {
    std::string base;                     ///< the real path of what the link leads to
    size_t namedBy;                       ///< how much of the path that is
    std::string linkedFrom;               ///< the real path of the folder that holds the link
    std::shared_ptr<const Route> before;  ///< null: base is a root's
};

struct Folder {
    std::string path;
    std::shared_ptr<const Route> route;  ///< null: of a root that can't be had
    bool isReal;                         ///< listed as a folder; anything else may be a link
};

std::string realPath(const std::string &path)
{
    FSRef ref;
    UInt8 real[4097];
    const bool found = FSPathMakeRef(reinterpret_cast<const UInt8 *>(path.c_str()), &ref, nullptr) == noErr &&
                       FSRefMakePath(&ref, real, sizeof real) == noErr;
    return found ? reinterpret_cast<const char *>(real) : "";
}

/// Whether the path is the folder or one below it.
bool isWithin(std::string_view path, std::string_view folder)
{
    return path.starts_with(folder) &&
           (path.size() == folder.size() || folder == "/" || path[folder.size()] == '/');
}

class Round {
public:
    explicit Round(id delegate) : delegate_(delegate) {}

    void run(NSArray *roots)
    {
        std::vector<Folder> level;
        for (NSString *root : tarvik::each<NSString>(roots))
            add(level, root);
        while (!level.empty()) {
            next_.clear();
            for (const Folder &folder : level) {
                list(folder);
                if (isStopped_)
                    return;
            }
            level.swap(next_);
        }
    }

private:
    static void add(std::vector<Folder> &level, NSString *root)
    {
        std::string path, entry;
        // As the paths of its entries begin.
        if (!tarvik::getPathBytes(root, path) ||
            !tarvik::getPathBytes([root stringByAppendingPathComponent:@"x"], entry))
            return;
        entry.resize(entry.size() - (entry.size() > 2 ? 2 : 1));
        level.push_back(
            {entry, std::make_shared<Route>(Route{realPath(path), entry.size(), "", nullptr}), true});
    }

    /// False for a link that leads to where the round is already, or has been too often.
    bool follow(Folder &folder)
    {
        const std::string target = realPath(folder.path);
        if (target.empty())
            return false;
        const std::string holder = realHolder(folder);
        std::string_view below = holder;
        for (const Route *route = folder.route.get(); route;
             below = route->linkedFrom, route = route->before.get())
            if (isWithin(below, target) && isWithin(target, route->base))
                return false;
        folder.route = std::make_shared<Route>(Route{target, folder.path.size(), holder, folder.route});
        return ++visits_[target] <= kMostVisits;
    }

    /// The real path of the folder in which a path's last name stands.
    static std::string realHolder(const Folder &folder)
    {
        const size_t from = folder.route->namedBy, end = std::max(folder.path.rfind('/'), from);
        const std::string below = folder.path.substr(from, end - from);
        return folder.route->base == "/" && below.starts_with('/') ? below : folder.route->base + below;
    }

    void list(const Folder &listed)
    {
        Folder folder = listed;
        if (!folder.isReal && !follow(folder))
            return;
        folder_ = &folder;
        path_ = folder.path;
        if (path_ != "/")
            path_ += '/';
        nameAt_ = path_.size();
        pool_ = std::make_unique<tarvik::Pool>();
        pooled_ = 0;
        FSVisitFolder(reinterpret_cast<const UInt8 *>(folder.path.c_str()), visit, this);
        pool_.reset();
    }

    static Boolean visit(const char *name, size_t length, FSEntryKind kind, void *round)
    {
        return static_cast<Round *>(round)->visit({name, length}, kind);
    }

    bool visit(std::string_view name, FSEntryKind kind)
    {
        path_.resize(nameAt_);
        path_ += name;
        if (++pooled_ % kPooledPaths == 0) {
            pool_.reset();
            pool_ = std::make_unique<tarvik::Pool>();
        }
        const uint32_t verdict = [delegate_ treeRoundEvaluatePath:tarvik::pathText(path_.c_str())];
        if (verdict == TreeRoundDescend && kind != kFSEntryIsOther)
            next_.push_back({path_, folder_->route, kind == kFSEntryIsFolder});
        isStopped_ = verdict & TreeRoundStop;
        return !(verdict & (TreeRoundStop | TreeRoundLeaveFolder));
    }

    id<TreeRoundDelegate> delegate_;
    std::vector<Folder> next_;
    std::unordered_map<std::string, unsigned> visits_;
    bool isStopped_ = false;
    // the folder that is being listed
    const Folder *folder_ = nullptr;
    std::string path_;
    size_t nameAt_ = 0;
    std::unique_ptr<tarvik::Pool> pool_;
    unsigned pooled_ = 0;
};

}  // namespace

@implementation TreeRound

- (BOOL)start:(NSArray *)roots withDelegate:(id)delegate
{
    Round round(delegate);  // its pool outlives an exception that the delegate made in it
    return tarvik::guarded("-[TreeRound start:withDelegate:]", 56, NO, [&] {
        if ([roots count] == 0 || ![delegate respondsToSelector:@selector(treeRoundEvaluatePath:)])
            return NO;
        round.run(roots);
        return YES;
    });
}

@end
