// The companion of a file, of any bytes: what is known of the file never fails in another way than a broken
// companion does, and a companion that was refused is left as it was.
#include <Tarvik/system/FileForks.h>
#include <Tarvik/system/FileLabels.h>
#include <Tarvik/system/FileReferences.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const std::string folder = [] {
        std::string path = std::string(access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") +
                           "/finderinfo-XXXXXX";  // in memory: no disk is worn
        if (!mkdtemp(path.data()))
            std::abort();
        static const std::string made = path;
        std::atexit([] { std::filesystem::remove_all(made); });
        std::ofstream(path + "/f") << "data";
        return path;
    }();
    const std::string bytes(reinterpret_cast<const char *>(data), size), path = folder + "/f",
                                                                         companion = folder + "/._f";
    unlink(companion.c_str());
    std::ofstream(companion, std::ios::binary) << bytes;
    FSRef ref;
    FSCatalogInfo info;
    HFSUniStr255 fork;
    FSGetResourceForkName(&fork);
    if (FSPathMakeRef(reinterpret_cast<const UInt8 *>(path.c_str()), &ref, nullptr) != noErr)
        std::abort();
    const OSErr error = FSGetCatalogInfo(&ref, kFSCatInfoGettableInfo, &info, nullptr, nullptr, nullptr);
    if (error != noErr && error != ioErr)
        std::abort();
    if (CFMutableDataRef resources = FSReadFileFork(&ref, &fork))
        CFRelease(resources);
    if (FSSetLabelColorIndex(&ref, 3)) {
        if (FSGetLabelColorIndex(&ref) != 3)
            std::abort();
    } else {
        std::ifstream file(companion, std::ios::binary);
        if (std::string(std::istreambuf_iterator<char>(file), {}) != bytes)
            std::abort();
    }
    return 0;
}
