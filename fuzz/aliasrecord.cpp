// Alias records from outside: what is read can be written and reads back as the same; resolving one does no
// harm.
#include "platform/Aliases/private/AliasContents.h"

#include <Carbon/Aliases.h>

#include <cstdlib>
#include <cstring>

using namespace tarvik::aliases;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    std::string record(reinterpret_cast<const char *>(bytes), std::min<size_t>(size, UINT16_MAX));
    if (size > 16 &&
        bytes[0] != 0xFF) {  // a length and a sum that are right, or nothing behind them would ever be read
        const uint16_t length = uint16_t(record.size());
        const uint32_t sum = fieldsSum(std::string_view(record).substr(16));
        std::memcpy(&record[4], &length, sizeof length);
        std::memcpy(&record[12], &sum, sizeof sum);
    }
    if (const auto contents = decode(record)) {
        const auto again = encode(*contents, 0);
        const auto same = again ? decode(*again) : std::nullopt;
        if (!same || !(*same == *contents) || contents->path.find("/..") == 0)
            abort();
    }
    FSRef target;
    Boolean changed;
    Handle handle = nullptr;
    if (PtrToHand(record.data(), &handle, Size(record.size())) != noErr)
        return 0;
    FSResolveAlias(nullptr, reinterpret_cast<AliasHandle>(handle), &target, &changed);
    DisposeHandle(handle);
    return 0;
}
