#include "private/ForkContents.h"
#include "private/ResourceFork.h"

#include <Carbon/Resources.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Pool.h>
#import <Tarvik/support/Retained.h>
#include <algorithm>
#include <climits>
#include <list>
#include <unistd.h>
#include <unordered_map>

#import "platform/CoreFoundation/private/WholeFile.h"
#include "platform/Files/private/Errors.h"

namespace {

using tarvik::resources::Resource;

constexpr ResFileRefNum kNoFile = -1;
constexpr ResType kVersionType = 0x76657273;  // 'vers'
constexpr SInt8 kReadPermission = 1;

thread_local OSErr lastError = noErr;

template <class Result>
Result failing(OSErr error, Result result)
{
    lastError = error;
    return result;
}

// A version's number and country stand in the file's order, which is the reverse of this processor's.
void turnVersion(ResType type, char *bytes, size_t size)
{
    if (type != kVersionType || size < 6)
        return;
    std::swap(bytes[0], bytes[3]);
    std::swap(bytes[1], bytes[2]);
    std::swap(bytes[4], bytes[5]);
}

/// One resource of an open file: what the file says, and the memory that callers see.
struct Entry {
    Resource resource;
    Handle handle = nullptr;  // null until asked for
    bool changed = false;
};

struct File {
    ResFileRefNum number;
    FSRef ref;
    std::string path;
    bool isFork;  // in the resource fork, not in the file itself
    bool writable;
    bool changed = false;      // the map
    std::list<Entry> entries;  // addresses stay
};

struct Place {
    File *file;
    Entry *entry;
};

std::list<File> gChain;  // the latest first
std::unordered_map<Handle, Place> gHandles;
ResFileRefNum gCurrent = kNoFile;
ResFileRefNum gNextNumber = 1;

File *fileOf(ResFileRefNum number)
{
    for (File &file : gChain) {
        if (file.number == number)
            return &file;
    }
    return nullptr;
}

Place *placeOf(Handle handle)
{
    const auto found = gHandles.find(handle);
    return found == gHandles.end() ? failing<Place *>(resNotFound, nullptr) : failing(noErr, &found->second);
}

Handle handleOf(File &file, Entry &entry)
{
    if (!entry.handle) {
        const std::string &data = entry.resource.data;
        if (PtrToHand(data.data(), &entry.handle, Size(data.size())) != noErr)
            return failing<Handle>(memFullErr, nullptr);
        turnVersion(entry.resource.type, *entry.handle, data.size());
        gHandles[entry.handle] = {&file, &entry};
    }
    return failing(noErr, entry.handle);
}

template <class Matches>
Handle findIn(File &file, Matches matches)
{
    for (Entry &entry : file.entries) {
        if (matches(entry.resource))
            return handleOf(file, entry);
    }
    return failing<Handle>(resNotFound, nullptr);
}

template <class Matches>
Handle findInCurrent(Matches matches)
{
    File *file = fileOf(gCurrent);
    return file ? findIn(*file, matches) : failing<Handle>(resNotFound, nullptr);
}

OSErr save(const File &file, const std::string &bytes)
{
    if (file.isFork)
        return tarvik::resources::writeResourceFork(file.ref, bytes);
    tarvik::Pool pool;
    return tarvik::writeWholeFile(file.path, tarvik::nsdata(bytes)) ? OSErr(noErr)
                                                                    : tarvik::files::fileError(errno);
}

OSErr load(const File &file, std::string &bytes)
{
    if (file.isFork) {
        const OSErr error = tarvik::resources::readResourceFork(file.ref, bytes);
        return error == noErr && bytes.empty() ? OSErr(eofErr) : error;
    }
    tarvik::Pool pool;
    const auto contents = tarvik::adopt(tarvik::readWholeFile(file.path));
    if (!contents)
        return tarvik::files::fileError(errno);
    bytes.assign(static_cast<const char *>([contents.get() bytes]), [contents.get() length]);
    return noErr;
}

OSErr write(File &file)
{
    if (!file.writable)
        return permErr;
    std::vector<Resource> all;
    for (Entry &entry : file.entries) {
        if (entry.changed && entry.handle) {
            entry.resource.data.assign(*entry.handle, size_t(GetHandleSize(entry.handle)));
            turnVersion(entry.resource.type, entry.resource.data.data(), entry.resource.data.size());
        }
        all.push_back(entry.resource);
    }
    const auto fork = tarvik::resources::forkOf(all);
    if (!fork)
        return addResFailed;  // more than the format holds
    if (const OSErr error = save(file, *fork); error != noErr)
        return error;
    for (Entry &entry : file.entries)
        entry.changed = false;
    file.changed = false;
    return noErr;
}

bool needsWriting(const File &file)
{
    bool needs = file.changed;
    for (const Entry &entry : file.entries)
        needs |= entry.changed;
    return needs;
}

std::vector<ResType> currentTypes()
{
    std::vector<ResType> types;
    if (File *file = fileOf(gCurrent)) {
        for (const Entry &entry : file->entries) {
            if (std::find(types.begin(), types.end(), entry.resource.type) == types.end())
                types.push_back(entry.resource.type);
        }
    }
    return types;
}

}  // namespace

OSErr FSOpenResourceFile(const FSRef *ref, UniCharCount forkNameLength, const UniChar *forkName,
                         SInt8 permission, ResFileRefNum *refNum)
{
    if (!ref || !refNum)
        return failing<OSErr>(paramErr, paramErr);
    *refNum = kNoFile;
    const bool isFork = tarvik::resources::isResourceForkName(forkNameLength, forkName);
    if (forkNameLength != 0 && !isFork)
        return failing<OSErr>(errFSBadForkName, errFSBadForkName);
    UInt8 path[PATH_MAX];
    if (const OSStatus status = FSRefMakePath(ref, path, sizeof path); status != noErr)
        return failing(OSErr(status), OSErr(status));
    File file{gNextNumber, *ref, reinterpret_cast<const char *>(path), isFork, permission != kReadPermission,
              false,       {}};
    if (file.writable && access(file.path.c_str(), W_OK) != 0)
        return failing<OSErr>(permErr, permErr);
    std::string contents;
    if (const OSErr error = load(file, contents); error != noErr)
        return failing(error, error);
    auto resources = tarvik::resources::parseFork(contents);
    if (!resources)
        return failing<OSErr>(mapReadErr, mapReadErr);
    for (Resource &resource : *resources)
        file.entries.push_back({std::move(resource)});
    gChain.push_front(std::move(file));
    gNextNumber = gNextNumber == SHRT_MAX ? 1 : gNextNumber + 1;
    while (fileOf(gNextNumber))  // a number comes again only when its file is closed
        gNextNumber = gNextNumber == SHRT_MAX ? 1 : gNextNumber + 1;
    *refNum = gCurrent = gChain.front().number;
    return failing<OSErr>(noErr, noErr);
}

ResFileRefNum FSOpenResFile(const FSRef *ref, SInt8 permission)
{
    HFSUniStr255 name;
    ResFileRefNum refNum = kNoFile;
    FSGetResourceForkName(&name);
    FSOpenResourceFile(ref, name.length, name.unicode, permission, &refNum);
    return refNum;
}

OSErr FSCreateResourceFork(const FSRef *ref, UniCharCount forkNameLength, const UniChar *forkName, UInt32)
{
    if (!ref)
        return failing<OSErr>(paramErr, paramErr);
    if (!tarvik::resources::isResourceForkName(forkNameLength, forkName))
        return failing<OSErr>(errFSBadForkName, errFSBadForkName);
    OSErr error = FSCreateFork(ref, forkNameLength, forkName);  // fails for one with bytes
    if (error == noErr)
        error = tarvik::resources::writeResourceFork(*ref, tarvik::resources::forkOf({}).value_or(""));
    return failing(error, error);
}

void UpdateResFile(ResFileRefNum refNum)
{
    File *file = fileOf(refNum);
    lastError = !file ? OSErr(resFNotFound) : needsWriting(*file) ? write(*file) : OSErr(noErr);
}

void CloseResFile(ResFileRefNum refNum)
{
    UpdateResFile(refNum);
    for (auto file = gChain.begin(); file != gChain.end(); ++file) {
        if (file->number != refNum)
            continue;
        for (Entry &entry : file->entries) {
            gHandles.erase(entry.handle);
            DisposeHandle(entry.handle);
        }
        file = gChain.erase(file);
        if (gCurrent == refNum)
            gCurrent = file != gChain.end() ? file->number : gChain.empty() ? kNoFile : gChain.front().number;
        return;
    }
}

ResFileRefNum CurResFile() { return failing(noErr, gCurrent); }

void UseResFile(ResFileRefNum refNum)
{
    if (!fileOf(refNum)) {
        lastError = resFNotFound;
        return;
    }
    gCurrent = refNum;
    lastError = noErr;
}

OSErr ResError() { return lastError; }

Handle Get1Resource(ResType type, ResID number)
{
    return findInCurrent([&](const Resource &r) { return r.type == type && r.id == number; });
}

Handle GetResource(ResType type, ResID number)
{
    bool reached = false;
    for (File &file : gChain) {
        reached |= file.number == gCurrent;
        if (!reached)
            continue;
        if (Handle found = findIn(file, [&](const Resource &r) { return r.type == type && r.id == number; }))
            return found;
    }
    return failing<Handle>(resNotFound, nullptr);
}

Handle Get1NamedResource(ResType type, ConstStr255Param name)
{
    if (!name)
        return failing<Handle>(resNotFound, nullptr);
    const std::string_view wanted(reinterpret_cast<const char *>(name) + 1, name[0]);
    return findInCurrent([&](const Resource &r) { return r.type == type && r.name == wanted; });
}

ResourceCount Count1Types() { return failing(noErr, ResourceCount(currentTypes().size())); }

void Get1IndType(ResType *type, ResourceIndex index)
{
    if (!type)
        return;
    const auto types = currentTypes();
    *type = index >= 1 && size_t(index) <= types.size() ? types[size_t(index) - 1] : 0;
    lastError = noErr;
}

ResourceCount Count1Resources(ResType type)
{
    ResourceCount count = 0;
    if (File *file = fileOf(gCurrent)) {
        for (const Entry &entry : file->entries)
            count += entry.resource.type == type;
    }
    return failing(noErr, count);
}

Handle Get1IndResource(ResType type, ResourceIndex index)
{
    return findInCurrent([&](const Resource &r) { return r.type == type && --index == 0; });
}

void GetResInfo(Handle resource, ResID *number, ResType *type, Str255 name)
{
    Place *place = placeOf(resource);
    if (!place)
        return;
    const Resource &found = place->entry->resource;
    if (number)
        *number = found.id;
    if (type)
        *type = found.type;
    if (name) {
        const std::string text = found.name.value_or("");
        name[0] = UInt8(text.size());
        std::copy(text.begin(), text.end(), name + 1);
    }
}

ResAttributes GetResAttrs(Handle resource)
{
    Place *place = placeOf(resource);
    return place ? ResAttributes(place->entry->resource.attributes | (place->entry->changed ? resChanged : 0))
                 : ResAttributes(0);
}

ResFileRefNum HomeResFile(Handle resource)
{
    Place *place = placeOf(resource);
    return place ? place->file->number : kNoFile;
}

void ReleaseResource(Handle resource)
{
    Place *place = placeOf(resource);
    if (!place || place->entry->changed)  // what is to be written stays
        return;
    place->entry->handle = nullptr;
    gHandles.erase(resource);
    DisposeHandle(resource);
}

void DetachResource(Handle resource)
{
    Place *place = placeOf(resource);
    if (!place)
        return;
    if (place->entry->changed) {
        lastError = resAttrErr;
        return;
    }
    place->entry->handle = nullptr;
    gHandles.erase(resource);
}

void AddResource(Handle data, ResType type, ResID number, ConstStr255Param name)
{
    File *file = fileOf(gCurrent);
    const bool taken = file && Get1Resource(type, number);
    if (!data || !file || taken || gHandles.count(data)) {
        lastError = addResFailed;
        return;
    }
    Entry entry{{type, number, 0, std::nullopt, {}}, data, true};
    if (name)
        entry.resource.name = std::string(reinterpret_cast<const char *>(name) + 1, name[0]);
    file->entries.push_back(std::move(entry));
    file->changed = true;
    gHandles[data] = {file, &file->entries.back()};
    lastError = noErr;
}

void ChangedResource(Handle resource)
{
    Place *place = placeOf(resource);
    if (!place)
        return;
    if (place->entry->resource.attributes & resProtected)
        lastError = resAttrErr;
    else
        place->entry->changed = true;
}

void WriteResource(Handle resource)
{
    Place *place = placeOf(resource);
    if (place && place->entry->changed)
        UpdateResFile(place->file->number);
}

void RemoveResource(Handle resource)
{
    Place *place = placeOf(resource);
    if (!place || (place->entry->resource.attributes & resProtected)) {
        lastError = rmvResFailed;
        return;
    }
    const Place gone = *place;
    gHandles.erase(resource);
    gone.file->changed = true;
    gone.file->entries.remove_if([&](const Entry &entry) { return &entry == gone.entry; });
}
