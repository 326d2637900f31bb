#include <Tarvik/system/FileUtils.h>
#include <Tarvik/system/TFileLocationInfo.h>
#include <Tarvik/system/private/PathURL.h>

#include <vector>

TFileLocationInfo::~TFileLocationInfo()
{
    if (url)
        CFRelease(url);
}

TFileLocationInfo &TFileLocationInfo::operator=(const TFileLocationInfo &other)
{
    if (this == &other)
        return *this;
    path = other.path;
    kind = other.kind;
    if (kind == kURL) {
        CFURLRef old = url;
        url = other.url ? static_cast<CFURLRef>(CFRetain(other.url)) : nullptr;
        if (old)
            CFRelease(old);
    }
    return *this;
}

CFURLRef TFileLocationInfo::CreateCFURL() const
{
    if (kind == kURL)
        return url ? static_cast<CFURLRef>(CFRetain(url)) : nullptr;
    if (kind != kPath)
        return nullptr;
    const bool isDirectory = path.ends_with(file_utils::GetPathDelimiter());
    return createPathURL(isDirectory ? path.substr(0, path.size() - 1) : path, isDirectory);
}

std::string TFileLocationInfo::GetFullPath() const
{
    std::string full;
    if (kind == kPath)
        full = path;
    else if (kind == kURL)
        GetPathFromCFURLRef(url, full);
    return full;
}

bool TFileLocationInfo::GetPathFromCFURLRef(CFURLRef url, std::string &path)
{
    path.clear();
    CFStringRef text = url ? CFURLCopyFileSystemPath(url, kCFURLPOSIXPathStyle) : nullptr;
    if (!text)
        return false;
    std::vector<char> buffer(
        size_t(CFStringGetMaximumSizeForEncoding(CFStringGetLength(text), kCFStringEncodingUTF8)) + 1);
    if (CFStringGetCString(text, buffer.data(), CFIndex(buffer.size()), kCFStringEncodingUTF8))
        path = buffer.data();
    CFRelease(text);
    return !path.empty();
}

bool TFileLocationInfo::IsFile() const
{
    FILE *file = file_utils::fopen(*this, "rb");
    return file && fclose(file) == 0;
}

bool TFileLocationInfo::IsFolder() const
{
    CFURLRef here = CreateCFURL();
    if (!here)
        return false;
    const bool isFolder = CFURLHasDirectoryPath(here);
    CFRelease(here);
    return isFolder;
}

bool TFileLocationInfo::CreateFile() const
{
    FILE *file = file_utils::fopen(*this, "wb");
    return file && fclose(file) == 0;
}

bool TFileLocationInfo::Delete() const
{
    return IsFolder() ? file_utils::DeleteDir(*this) : file_utils::DeleteFile(*this);
}
