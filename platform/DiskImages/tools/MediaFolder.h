#pragma once
#include <string>

namespace diskimages {

/// A folder that is removed at the end of the scope unless kept.
class MountFolder {
public:
    /// A fresh folder in the user's media folder (/media/USER or /run/media/USER; for somebody who may not
    /// make those, in the run-time folder or the home), called as the image without its ending, with a number
    /// behind it if need be.
    explicit MountFolder(const std::string &imagePath);
    ~MountFolder();
    MountFolder(const MountFolder &) = delete;
    MountFolder &operator=(const MountFolder &) = delete;

    const std::string &path() const { return path_; }
    void keep() { kept_ = true; }

private:
    std::string path_, madeParent_;
    bool kept_ = false;
};

/// Removes a folder that a MountFolder has left, now empty; any other is left alone.
void removeMountFolder(const std::string &path);

}  // namespace diskimages
