// AppleDouble headers: whatever is read as good has all its entries inside the file, apart from each other, and survives being
// laid out and written again.
#include "platform/Files/private/AppleDouble.h"

#include <cstdlib>

using namespace tarvik::files;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const auto check = [](bool holds) {
        if (!holds)
            std::abort();
    };
    AppleDouble file;
    if (readAppleDouble({reinterpret_cast<const char *>(data), size}, size, file) != AppleDoubleState::good)
        return 0;
    for (const auto &entry : file.entries)
        check(entry.length == 0 ||
              (entry.offset >= file.headerSize() && uint64_t(entry.offset) + entry.length <= size));
    if (auto *fork = file.find(AppleDouble::resourceFork))
        fork->length += 1000;
    for (auto &entry : file.entries)
        entry.offset = entry.length == 0 ? 0 : entry.offset;
    if (!layOut(file))
        return 0;
    uint64_t end = file.headerSize();
    for (const auto &entry : file.entries)
        end = std::max(end, uint64_t(entry.offset) + entry.length);
    AppleDouble again;
    check(readAppleDouble(file.header(), end, again) == AppleDoubleState::good);
    check(again.entries.size() == file.entries.size());
    return 0;
}
