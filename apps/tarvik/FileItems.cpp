#include "FileItems.h"

#include <cstdio>
#include <limits.h>

Failure fileFailure(const std::string &path, OSStatus error)
{
    const auto why = [error]() -> std::string {
        switch (error) {
        case fnfErr: return "no such file or folder";
        case dirNFErr: return "a folder on the way is missing";
        case afpAccessDenied:
        case permErr: return "not permitted";
        case wPrErr: return "the volume is read-only";
        case dskFulErr: return "no room left on the volume";
        case notAFileErr: return "not a plain file: it has no forks";
        case errFSNotAFolder: return "not a folder";
        case errFSNameTooLong: return "the name is too long";
        case bdNamErr: return "no usable name, or links that lead nowhere";
        case fLckdErr: return "the file is locked";
        case dupFNErr: return "the name is taken";
        case ioErr:
            return "can't be read or written; is the companion file (._NAME beside it) damaged, or something "
                   "else?";
        default: return "error " + std::to_string(error);
        }
    };
    return Failure(path + ": " + why());
}

FSRef itemAt(const std::string &path, OptionBits options)
{
    FSRef ref;
    if (const OSStatus error =
            FSPathMakeRefWithOptions(reinterpret_cast<const UInt8 *>(path.c_str()), options, &ref, nullptr);
        error != noErr)
        throw fileFailure(path, error);
    return ref;
}

std::string pathOfItem(const FSRef &ref)
{
    UInt8 path[PATH_MAX];
    return FSRefMakePath(&ref, path, sizeof path) == noErr ? reinterpret_cast<const char *>(path) : "";
}

FSCatalogInfo catalogOf(const FSRef &ref, FSCatalogInfoBitmap which, const std::string &path)
{
    FSCatalogInfo info;
    if (const OSErr error = FSGetCatalogInfo(&ref, which, &info, nullptr, nullptr, nullptr); error != noErr)
        throw fileFailure(path, error);
    return info;
}

int forEachFile(const char *command, const std::vector<std::string> &paths,
                const std::function<void(const std::string &)> &work)
{
    int status = kSuccess;
    for (const std::string &path : paths) {
        try {
            work(path);
        } catch (const Failure &failure) {
            std::fflush(stdout);
            std::fprintf(stderr, "tarvik %s: %s\n", command, failure.what());
            status = kFailure;
        }
    }
    return status;
}
