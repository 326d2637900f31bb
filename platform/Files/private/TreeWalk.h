// Walks a folder's whole tree, at about the price of listing it.
#pragma once
#include <Carbon/MacTypes.h>
#include <Tarvik/support/Handle.h>
#include <sys/stat.h>

#include <string>
#include <string_view>

namespace tarvik::files {

struct WalkedItem {
    const char *subpath;  ///< within the walked folder, ended by a zero
    size_t length;
    size_t nameAt;       ///< where in it the name starts
    int folder;          ///< the open folder that holds it; -1 very far down
    int descriptor;      ///< of a folder, open; -1 for what is none or can't be read
    unsigned char kind;  ///< DT_REG, DT_DIR, DT_LNK, ...: never DT_UNKNOWN but for what vanished meanwhile
    bool hasCompanion;   ///< `._name` stands beside it

    const char *name() const { return subpath + nameAt; }
};

class TreeWalk {
public:
    virtual ~TreeWalk() = default;

    /// Every item below the folder, each folder right before what it holds, in the file system's order. Links aren't followed; folders that
    /// can't be read are empty; `._name` companions of a listed name are left out unless they are wanted.
    OSErr run(const std::string &folder, bool withCompanions);

protected:
    /// False: what lies below the item is left out.
    virtual bool visit(const WalkedItem &item) = 0;
    /// An item's whole path.
    std::string path(const WalkedItem &item) const { return root_ + '/' + item.subpath; }
    /// lstat of an item.
    bool inspect(const WalkedItem &item, struct stat &about) const;

private:
    void list(FileDescriptor folder, unsigned depth);

    std::string root_, subpath_;
    bool withCompanions_ = false;
};

}  // namespace tarvik::files
