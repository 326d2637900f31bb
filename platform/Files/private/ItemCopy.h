/// \file
/// The copy of an item: a file, a link, a folder with all it holds.
#pragma once
#include <Carbon/Files.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

namespace tarvik::files {

/// How far a copy is; read by other threads while it is made.
class CopyStatus {
public:
    std::atomic<bool> isCancelled{false};
    std::atomic<uint64_t> totalBytes{0}, bytes{0}, totalObjects{0}, objects{0};

    /// The path of what is being copied.
    std::string current() const
    {
        const std::lock_guard held(lock_);
        return current_;
    }
    void setCurrent(const std::string &path)
    {
        const std::lock_guard held(lock_);
        current_ = path;
    }

private:
    mutable std::mutex lock_;
    std::string current_;
};

struct CopyOptions {
    bool overwrites = false;       ///< what has the name is replaced
    bool skipsUnreadable = false;  ///< below a folder
};

/// What there is to copy, added to the status' totals; what can't be looked at counts as nothing.
/// userCanceledErr.
OSErr measureItem(const FSRef &source, CopyStatus &status);
/// Makes the copy beside its place and moves it there.
/// \param name the copy's, as on the disk; empty: the source's
/// \param target receives the copy's reference; may be null
OSErr copyItem(const FSRef &source, const FSRef &folder, const std::string &name, const CopyOptions &options,
               CopyStatus &status, FSRef *target);

}  // namespace tarvik::files
