#include "platform/Files/private/Companion.h"

#include "platform/Files/private/Copying.h"
#include "platform/Files/private/Errors.h"

#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>

namespace tarvik::files {
namespace {

/// A file of an unguessable name beside its target; gone unless it took the target's place.
class NewFile {
public:
    explicit NewFile(const std::string &target) : target_(target)
    {
        for (int attempt = 0; attempt < 8 && !descriptor_; ++attempt) {
            uint64_t number;
            char name[40];
            if (getrandom(&number, sizeof number, 0) != sizeof number)
                break;
            std::snprintf(name, sizeof name, ".tarvik-%016llx", static_cast<unsigned long long>(number));
            path_ = joined(folderOf(target), name);
            descriptor_.reset(
                ::open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
            if (!descriptor_ && errno != EEXIST)
                break;
        }
    }
    ~NewFile()
    {
        if (descriptor_)
            unlink(path_.c_str());
    }
    NewFile(const NewFile &) = delete;
    NewFile &operator=(const NewFile &) = delete;

    explicit operator bool() const { return bool(descriptor_); }
    int descriptor() const { return descriptor_.get(); }
    bool replaceTarget()
    {
        if (rename(path_.c_str(), target_.c_str()) != 0)
            return false;
        descriptor_.reset();
        return true;
    }

private:
    std::string target_, path_;
    FileDescriptor descriptor_;
};

bool isZero(const FinderInfo &info)
{
    return std::all_of(info.begin(), info.end(), [](uint8_t byte) { return byte == 0; });
}

AppleDouble::Entry &entry(AppleDouble &layout, AppleDouble::Id id, uint32_t length)
{
    if (auto *known = layout.find(id))
        return *known;
    layout.entries.push_back({id, 0, length});
    return layout.entries.back();
}

std::string packed(const std::array<int32_t, 4> &dates)
{
    std::string bytes;
    for (const int32_t date : dates)
        for (int shift = 24; shift >= 0; shift -= 8)
            bytes += char(uint32_t(date) >> shift);
    return bytes;
}

/// An error of a write leaves its number here; the later ones are not made then.
class Writer {
public:
    explicit Writer(int file) : file_(file) {}
    void bytes(const void *bytes, size_t length, uint64_t offset)
    {
        if (error_ == 0)
            error_ = writeAll(file_, bytes, length, offset);
    }
    void copy(int from, uint64_t fromOffset, uint64_t length, uint64_t offset)
    {
        if (error_ == 0 && length > 0)
            error_ = copyBytes(from, fromOffset, file_, offset, length);
    }
    int error() const { return error_; }

private:
    int file_, error_ = 0;
};

}  // namespace

std::string companionPath(const std::string &item)
{
    const std::string name = "._" + (item == "/" ? "." : nameOf(item));
    return name.size() > NAME_MAX ? "" : joined(folderOf(item), name);
}

OSErr Companion::open(const std::string &item, Companion &companion)
{
    companion = Companion();
    const std::string path = companionPath(item);
    if (path.empty())
        return noErr;
    companion.descriptor_.reset(
        ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
    if (companion.descriptor_)
        return companion.read();
    if (errno == ENOENT || errno == ENOTDIR)
        return noErr;
    companion.state_ = State::foreign;  // a link, or something that can't be opened
    return errno == ELOOP || errno == ENXIO ? OSErr(noErr) : fileError(errno);
}

OSErr Companion::read()
{
    struct statx file;
    if (status(descriptor_.get(), "", file) != 0)
        return fileError(errno);
    state_ = State::foreign;
    if (!S_ISREG(file.stx_mode))
        return noErr;
    // Most companions are small: the header, the Finder information and the dates come with one read.
    char start[4096];
    const ssize_t count = pread(descriptor_.get(), start, sizeof start, 0);
    if (count < 0)
        return fileError(errno);
    switch (readAppleDouble({start, size_t(count)}, file.stx_size, layout_)) {
    case AppleDoubleState::foreign: return noErr;
    case AppleDoubleState::broken: state_ = State::broken; return noErr;
    case AppleDoubleState::good: break;
    }
    state_ = State::good;
    const auto get = [&](const AppleDouble::Entry *entry, void *bytes, size_t length) {
        return entry && pread(descriptor_.get(), bytes, length, off_t(entry->offset)) == ssize_t(length);
    };
    get(layout_.find(AppleDouble::finderInfo), finderInfo_.data(), finderInfo_.size());
    uint8_t packedDates[kDatesSize];
    if (get(layout_.find(AppleDouble::dates), packedDates, sizeof packedDates))
        for (size_t i = 0; i < dates_.size(); ++i) {
            const uint8_t *b = packedDates + 4 * i;
            dates_[i] = int32_t(uint32_t(b[0]) << 24 | uint32_t(b[1]) << 16 | uint32_t(b[2]) << 8 | b[3]);
        }
    if (const auto *fork = layout_.find(AppleDouble::resourceFork)) {
        char blank[64];
        const bool isBlank = fork->length == 286 && get(fork, blank, sizeof blank) &&
                             isBlankResourceFork({blank, sizeof blank}, fork->length);
        resource_ = {fork->id, fork->offset, isBlank ? 0 : fork->length};
    }
    return noErr;
}

OSErr Companion::replace(const std::string &item, const struct statx &itemStatus, const Changes &changes)
{
    if (const OSErr error = writable(); error != noErr)
        return error;
    const std::string path = companionPath(item);
    const FinderInfo info = changes.finderInfo.value_or(finderInfo_);
    const auto times = changes.dates.value_or(dates_);
    const uint64_t resourceLength = changes.resourceFork ? changes.resourceFork->length : resource_.length;
    if (resourceLength > UINT32_MAX)
        return dskFulErr;

    AppleDouble made = layout_;
    for (AppleDouble::Entry &known : made.entries)  // an empty one keeps no other from its place
        if (known.length == 0)
            known.offset = 0;
    const uint32_t infoLength = entry(made, AppleDouble::finderInfo, kFinderInfoSize).length;
    const bool holdsMore = infoLength > kFinderInfoSize ||
                           std::any_of(made.entries.begin(), made.entries.end(), [](const auto &e) {
                               return e.id != AppleDouble::resourceFork && e.id != AppleDouble::dates &&
                                      e.id != AppleDouble::finderInfo;
                           });
    if (isZero(info) && resourceLength == 0 && times[2] == INT32_MIN && !holdsMore)
        return state_ == State::absent || unlink(path.c_str()) == 0 || errno == ENOENT ? OSErr(noErr)
                                                                                       : fileError(errno);
    if (path.empty())
        return errFSNameTooLong;

    if (changes.dates && !hasDates() && infoLength == kFinderInfoSize)
        entry(made, AppleDouble::dates, kDatesSize);
    entry(made, AppleDouble::resourceFork, 0).length = uint32_t(resourceLength);
    if (!layOut(made))
        return ioErr;

    NewFile file(path);
    if (!file)
        return fileError(errno);
    Writer writer(file.descriptor());
    const std::string header = made.header();
    writer.bytes(header.data(), header.size(), 0);
    for (const AppleDouble::Entry &each : made.entries) {
        const AppleDouble::Entry *old = layout_.find(each.id);
        if (each.id == AppleDouble::resourceFork) {
            if (changes.resourceFork)
                writer.copy(changes.resourceFork->descriptor, 0, each.length, each.offset);
            else if (each.length > 0)
                writer.copy(descriptor_.get(), resource_.offset, each.length, each.offset);
        } else {
            if (old)
                writer.copy(descriptor_.get(), old->offset, each.length, each.offset);
            if (each.id == AppleDouble::finderInfo)
                writer.bytes(info.data(), info.size(), each.offset);
            else if (each.id == AppleDouble::dates)
                writer.bytes(packed(times).data(), kDatesSize, each.offset);
        }
    }
    if (writer.error() != 0)
        return fileError(writer.error());
    // Who may read the file may read its companion.
    fchmod(file.descriptor(), (itemStatus.stx_mode & 0666) | 0600);
    if (geteuid() == 0 && fchown(file.descriptor(), itemStatus.stx_uid, itemStatus.stx_gid) != 0)
        return fileError(errno);
    return file.replaceTarget() ? OSErr(noErr) : fileError(errno);
}

bool hasCompanion(const std::string &item)
{
    Companion companion;
    return Companion::open(item, companion) == noErr &&
           (companion.state() == Companion::State::good || companion.state() == Companion::State::broken);
}

OSErr CarriedCompanion::mayGoTo(const std::string &newItem) const
{
    if (!exists_)
        return noErr;
    if (companionPath(newItem).empty())
        return errFSNameTooLong;
    Companion there;
    const OSErr error = Companion::open(newItem, there);
    return error == noErr && there.writable() != noErr ? OSErr(dupFNErr) : error;
}

OSErr CarriedCompanion::copyTo(const std::string &newItem) const
{
    if (!exists_)
        return noErr;
    const FileDescriptor source(
        ::open(companionPath(item_).c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct statx about;
    if (!source || status(source.get(), "", about) != 0)
        return fileError(errno);
    NewFile copy(companionPath(newItem));
    if (!copy)
        return fileError(errno);
    if (const int error = copyFile(source.get(), copy.descriptor()); error != 0)
        return fileError(error);
    fchmod(copy.descriptor(), about.stx_mode & 0777);
    return copy.replaceTarget() ? OSErr(noErr) : fileError(errno);
}

OSErr CarriedCompanion::moveTo(const std::string &newItem) const
{
    if (!exists_ || rename(companionPath(item_).c_str(), companionPath(newItem).c_str()) == 0)
        return noErr;
    if (errno != EXDEV)
        return fileError(errno);
    const OSErr error = copyTo(newItem);
    return error == noErr ? remove() : error;
}

OSErr CarriedCompanion::remove() const
{
    return !exists_ || unlink(companionPath(item_).c_str()) == 0 || errno == ENOENT ? OSErr(noErr)
                                                                                    : fileError(errno);
}

}  // namespace tarvik::files
