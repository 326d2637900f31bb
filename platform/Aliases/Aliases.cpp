#include "platform/Aliases/private/AliasSearch.h"
#include "platform/Aliases/private/ReferencePath.h"
#include "platform/Files/private/References.h"

#include <Carbon/Aliases.h>

#include <cstring>
#include <new>

using namespace tarvik::aliases;

namespace {

Handle handleOf(AliasHandle alias) { return reinterpret_cast<Handle>(alias); }

/// The record's bytes: what the handle holds is not trusted.
std::string_view bytesOf(AliasHandle alias)
{
    const Handle handle = handleOf(alias);
    const Size size = handle ? GetHandleSize(handle) : 0;
    AliasRecord head;
    if (size < Size(sizeof head))
        return {};
    std::memcpy(&head, *handle, sizeof head);
    return {*handle, std::min(size_t(size), size_t(head.aliasSize))};
}

OSErr store(const AliasContents &contents, uint32_t userType, AliasHandle alias)
{
    const auto record = encode(contents, userType);
    if (!record)
        return pathTooLongErr;
    SetHandleSize(handleOf(alias), Size(record->size()));
    if (const OSErr error = MemError())
        return error;
    std::memcpy(*handleOf(alias), record->data(), record->size());
    return noErr;
}

OSErr describe(const FSRef *fromFile, const FSRef *target, bool minimal, AliasContents &contents)
{
    std::string path, start;
    OSErr error = target ? pathOf(target, path) : OSErr(paramErr);
    if (!error)
        error = pathOf(fromFile, start);
    return error ? error : tarvik::aliases::describe(path, start, minimal, contents);
}

OSErr make(const FSRef *fromFile, const FSRef *target, bool minimal, AliasHandle *alias)
{
    if (!alias)
        return paramErr;
    *alias = nullptr;
    AliasContents contents;
    OSErr error = describe(fromFile, target, minimal, contents);
    if (error)
        return error;
    const auto record = encode(contents, 0);
    Handle made = nullptr;
    error = record ? PtrToHand(record->data(), &made, Size(record->size())) : OSErr(pathTooLongErr);
    *alias = reinterpret_cast<AliasHandle>(made);
    return error;
}

/// Nothing that the C++ library throws (no memory) passes the interface.
template <class Body>
OSErr answer(Body &&body) noexcept
{
    try {
        return body();
    } catch (const std::exception &) {
        return memFullErr;
    }
}

}  // namespace

OSErr FSNewAlias(const FSRef *fromFile, const FSRef *target, AliasHandle *inAlias)
{
    return answer([&] { return make(fromFile, target, false, inAlias); });
}

OSErr FSNewAliasMinimal(const FSRef *target, AliasHandle *inAlias)
{
    return answer([&] { return make(nullptr, target, true, inAlias); });
}

OSErr FSUpdateAlias(const FSRef *fromFile, const FSRef *target, AliasHandle alias, Boolean *wasChanged)
{
    if (!alias || !*alias || !wasChanged || !target)
        return paramErr;
    return answer([&] {
        AliasContents contents;
        if (const OSErr error = describe(fromFile, target, false, contents))
            return error;
        const std::string_view bytes = bytesOf(alias);
        const auto before = decode(bytes);
        *wasChanged = !before || !(*before == contents);
        return *wasChanged ? store(contents, bytes.empty() ? 0 : (*alias)->userType, alias) : OSErr(noErr);
    });
}

OSErr FSResolveAlias(const FSRef *fromFile, AliasHandle alias, FSRef *target, Boolean *wasChanged)
{
    return FSResolveAliasWithMountFlags(fromFile, alias, target, wasChanged, kResolveAliasFileNoUI);
}

OSErr FSResolveAliasWithMountFlags(const FSRef *fromFile, AliasHandle inAlias, FSRef *target,
                                   Boolean *wasChanged, unsigned long mountFlags)
{
    if (!inAlias || !*inAlias || !target || !wasChanged)
        return paramErr;
    *wasChanged = false;
    return answer([&] {
        const auto contents = decode(bytesOf(inAlias));
        if (!contents)
            return OSErr(paramErr);
        std::string start;
        Target found;
        OSErr error = pathOf(fromFile, start);
        if (!error)
            error = find(*contents, start,
                         mountFlags & kResolveAliasTryFileIDFirst ? Order::IdentityFirst : Order::PathFirst,
                         found);
        if (!error)
            error = tarvik::files::makeReference(found.path, found.about, target);
        if (error || !found.changed)
            return error;
        AliasContents renewed;
        if (tarvik::aliases::describe(found.path, start, contents->parent.inode == 0, renewed) == noErr) {
            if (start.empty())
                renewed.relativePath = contents->relativePath;
            *wasChanged = store(renewed, (*inAlias)->userType, inAlias) == noErr;
        }
        return OSErr(noErr);
    });
}

Size GetAliasSize(AliasHandle alias) { return Size(bytesOf(alias).size()); }
