/// \file
/// A file or folder location, held as a POSIX path in UTF-8 or as a URL. A path that ends in "/" names a folder.
///
///     TFileLocationInfo location;
///     location.kind = TFileLocationInfo::kPath;
///     location.path = "/tmp/notes/";
///     location.IsFolder();        // true
///     file_utils::CreateDir(location);
#pragma once
#include <CoreFoundation/CFURL.h>
#include <stdint.h>

#ifdef __cplusplus
#include <string>

class TFileLocationInfo {
public:
    enum : int32_t { kEmpty = -1, kPath = 0, kURL = 1 };

    int32_t kind = kEmpty;
    std::string path;  ///< the location when the kind is kPath
    CFURLRef url =
        nullptr;  ///< the location when the kind is kURL; the record owns a reference to whatever stands here

    TFileLocationInfo() = default;
    TFileLocationInfo(const TFileLocationInfo &other) { *this = other; }
    ~TFileLocationInfo();
    /// Copies kind and path, and takes a reference to the URL when the kind is kURL. Assigned from another kind, the
    /// record keeps its old URL, which no longer counts.
    TFileLocationInfo &operator=(const TFileLocationInfo &other);

    /// The location as a URL, owned by the caller; null when empty or when the path is not UTF-8.
    CFURLRef CreateCFURL() const;
    /// The location as a path; empty when there is none.
    std::string GetFullPath() const;
    /// A URL's POSIX path; false when it is empty.
    static bool GetPathFromCFURLRef(CFURLRef url, std::string &path);

    /// Whether the location opens for reading.
    bool IsFile() const;
    /// Whether it is spelled as a folder: the path ends in "/". Nothing is looked up.
    bool IsFolder() const;
    /// Makes an empty file or empties an existing one.
    bool CreateFile() const;
    /// file_utils::DeleteDir for a location spelled as a folder, file_utils::DeleteFile for any other.
    bool Delete() const;
};

#endif
