/// \file
/// What processes execute, and the items that stand for them: the folder X.app that holds the executable (the innermost), or the file.
#pragma once
#include <Carbon/Files.h>

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace tarvik::processes {

/// The text of the link /proc/N/exe, and what follows from it alone.
class Executable {
public:
    explicit Executable(std::string_view link);

    const std::string &link() const { return link_; }
    /// The path of the item that stands for the process, as far as the text tells.
    const std::string &item() const { return item_; }
    bool isInApplication() const { return isInApplication_; }
    /// The program's name, without the kernel's " (deleted)".
    std::string_view name() const;
    /// The text ends as that of a deleted file does, and as that of few others.
    bool maybeDeleted() const { return maybeDeleted_; }

    /// A reference to the item that is there now.
    OSErr reference(FSRef *ref) const;

private:
    std::string link_, item_;
    bool isInApplication_ = false, maybeDeleted_;
    mutable std::mutex lock_;
    mutable std::optional<FSRef> latest_;  // made before, for as long as the same item is there
};

/// The one object of that text.
std::shared_ptr<const Executable> executableOf(std::string_view link);

}  // namespace tarvik::processes
