#include "platform/Files/private/Specs.h"

#include "platform/Files/private/Errors.h"
#include "platform/Files/private/Lookup.h"
#include "platform/Files/private/Volumes.h"

#include <Tarvik/support/Owned.h>
#include <dirent.h>
#include <fcntl.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace tarvik::files {
namespace {

constexpr size_t kLongestName = 31;  // what the older calls take

bool isPlainASCII(char c) { return c >= ' ' && c <= '~' && c != ':'; }

/// "A long name of something.text" -> "A long name of someth#1A2B.text"
std::string shortened(const std::string &name, uint32_t number)
{
    char mark[16];
    std::snprintf(mark, sizeof mark, "#%X", number);
    const size_t dot = name.rfind('.');
    std::string extension = dot != name.npos && dot > 0 && name.size() - dot <= 5 ? name.substr(dot) : "";
    for (char c : extension)
        if (!isPlainASCII(c))
            extension.clear();
    std::string begin;
    for (char c : name.substr(0, name.size() - extension.size()))
        begin += isPlainASCII(c) ? c : '?';
    begin.resize(std::min(begin.size(), kLongestName - std::strlen(mark) - extension.size()));
    return begin + mark + extension;
}

/// The item that a shortened name means.
bool findShortened(const std::string &folder, const std::string &name, std::string &path)
{
    const size_t mark = name.rfind('#');
    char *end = nullptr;
    const auto number = mark == name.npos ? 0 : uint32_t(std::strtoul(name.c_str() + mark + 1, &end, 16));
    const Owned<DIR, closedir> open(number ? opendir(folder.c_str()) : nullptr);
    for (const dirent *entry; open && (entry = readdir(open.get()));)
        if (uint32_t(entry->d_ino) == number && shortened(entry->d_name, number) == name) {
            path = joined(folder, entry->d_name);
            return true;
        }
    return false;
}

OSErr folderOfSpec(SInt16 volume, SInt32 number, std::string &path)
{
    const auto device = deviceOf(volume);
    if (!device)
        return nsvErr;
    if (number != fsRtDirID && number != fsRtParID && number != 0)
        return folderByNumber(*device, uint32_t(number), path);
    const auto root = mountPoint(*device);
    path = root.value_or("");
    return root ? OSErr(noErr) : OSErr(nsvErr);
}

}  // namespace

uint32_t numberOf(const struct statx &item, bool isVolumeRoot)
{
    return isVolumeRoot ? uint32_t(fsRtDirID) : uint32_t(item.stx_ino);
}

bool isVolumeRoot(const std::string &path, const struct statx &item)
{
    struct statx above;
    return path == "/" || (item.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT
                               ? (item.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0
                               : status(AT_FDCWD, folderOf(path).c_str(), above) == 0 &&
                                     identityOf(above).device != identityOf(item).device);
}

OSErr makeSpec(const std::string &path, const struct statx &item, FSSpec *spec)
{
    std::memset(spec, 0, sizeof *spec);
    spec->vRefNum = volumeOf(identityOf(item).device);
    std::string name = nameOf(path), roman;
    if (isVolumeRoot(path, item)) {
        spec->parID = fsRtParID;
        name = volumeName(path);
    } else {
        struct statx folder;
        FSRef met;  // the number leads to a folder that references have met
        if (const OSErr error = makeReference(folderOf(path), Leaf::asIs, &met, &folder); error != noErr)
            return error;
        spec->parID = SInt32(numberOf(folder, isVolumeRoot(folderOf(path), folder)));
    }
    if (!romanFromName(name, kLongestName, roman))
        roman = shortened(name, uint32_t(item.stx_ino));
    spec->name[0] = UInt8(roman.size());
    std::memcpy(spec->name + 1, roman.data(), roman.size());
    return noErr;
}

}  // namespace tarvik::files

using namespace tarvik::files;

OSErr FSpMakeFSRef(const FSSpec *source, FSRef *newRef)
{
    if (!source || !newRef)
        return paramErr;
    if (source->name[0] >= sizeof source->name)
        return bdNamErr;
    std::string folder, name;
    if (const OSErr error = folderOfSpec(source->vRefNum, source->parID, folder); error != noErr)
        return error;
    if (source->parID == fsRtParID)
        return makeReference(folder, Leaf::asIs, newRef);
    const std::string roman(reinterpret_cast<const char *>(source->name + 1), source->name[0]);
    if (const OSErr error = nameFromRoman(roman, name); error != noErr)
        return error;
    const OSErr error = makeReference(joined(folder, existingName(folder, name)), Leaf::asIs, newRef);
    std::string path;
    return error == fnfErr && findShortened(folder, roman, path) ? makeReference(path, Leaf::asIs, newRef)
                                                                 : error;
}

OSErr FSMakeFSSpec(SInt16 vRefNum, SInt32 dirID, ConstStr255Param fileName, FSSpec *spec)
{
    if (!spec)
        return paramErr;
    std::string folder;
    if (const OSErr error = folderOfSpec(vRefNum, dirID, folder); error != noErr)
        return error;
    if (!fileName || fileName[0] == 0) {  // the folder itself
        struct statx item;
        if (const int error = status(AT_FDCWD, folder.c_str(), item); error != 0)
            return fileError(error);
        return makeSpec(folder, item, spec);
    }
    if (fileName[0] >= sizeof spec->name)
        return bdNamErr;
    std::memset(spec, 0, sizeof *spec);
    spec->vRefNum = volumeOf(*deviceOf(vRefNum));
    spec->parID = dirID == 0 ? SInt32(fsRtDirID) : dirID;
    std::memcpy(spec->name, fileName, fileName[0] + 1u);
    FSRef ref;
    return FSpMakeFSRef(spec, &ref);
}
