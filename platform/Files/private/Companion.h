/// \file
/// The companion of an item: the AppleDouble file `._name` beside it.
///
/// Read without trust, never through a link, replaced whole by a rename. That holds against the end of the process at any
/// moment; the order of data and rename on a loss of power is the file system's (ext4, xfs and btrfs keep it).
#pragma once
#include "platform/Files/private/AppleDouble.h"
#include "platform/Files/private/References.h"

#include <Carbon/Files.h>
#include <Tarvik/support/Handle.h>

#include <optional>
#include <string>

namespace tarvik::files {

/// "/a/._b" for "/a/b"; "/._." for "/". Empty when the name has no room for it.
std::string companionPath(const std::string &item);

class Companion {
public:
    enum class State { absent, foreign, broken, good };
    /// Opens and reads that of the item at the path. Whatever stands there, this succeeds; errors are those of the system.
    static OSErr open(const std::string &item, Companion &companion);

    State state() const { return state_; }
    /// noErr when it may be written: there is none, or a good one.
    OSErr writable() const
    {
        return state_ == State::absent || state_ == State::good ? OSErr(noErr) : OSErr(ioErr);
    }
    /// All zero without one.
    const FinderInfo &finderInfo() const { return finderInfo_; }
    bool hasDates() const { return layout_.find(AppleDouble::dates) != nullptr; }
    /// Creation, modification, backup, access, as they are kept.
    const std::array<int32_t, 4> &dates() const { return dates_; }
    uint32_t resourceLength() const { return resource_.length; }
    uint32_t resourceOffset() const { return resource_.offset; }
    /// Open for reading; the caller may take it.
    FileDescriptor &descriptor() { return descriptor_; }

    /// What is to be other than it was.
    struct Changes {
        std::optional<FinderInfo> finderInfo;
        std::optional<std::array<int32_t, 4>> dates;
        struct Bytes {
            int descriptor;
            uint64_t length;
        };
        std::optional<Bytes> resourceFork;  ///< from the start of that file
    };
    /// Puts a new companion in this one's place; takes it away when nothing would be left in it.
    OSErr replace(const std::string &item, const struct statx &itemStatus, const Changes &changes);

private:
    OSErr read();

    State state_ = State::absent;
    FileDescriptor descriptor_;
    AppleDouble layout_;
    FinderInfo finderInfo_{};
    std::array<int32_t, 4> dates_{INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN};
    AppleDouble::Entry resource_{AppleDouble::resourceFork, 0, 0};
};

/// Whether a companion that must go with its item stands there.
bool hasCompanion(const std::string &item);

/// What happens to an item's companion when the item itself is copied, moved or removed by somebody who knows nothing of companions.
/// Made before that, so that it can be refused; used after it has succeeded.
class CarriedCompanion {
public:
    explicit CarriedCompanion(const std::string &item) : item_(item), exists_(hasCompanion(item)) {}
    /// noErr when it may stand beside the item's new place: nothing is there, or the companion of an item that is gone.
    OSErr mayGoTo(const std::string &newItem) const;

    OSErr copyTo(const std::string &newItem) const;
    OSErr moveTo(const std::string &newItem) const;
    OSErr remove() const;

private:
    std::string item_;
    bool exists_;
};

}  // namespace tarvik::files
