// Partition tables: whatever is read lies inside the disk, and reading ends.
#include "platform/DiskImages/tools/PartitionTable.h"

#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const int disk = memfd_create("disk", MFD_CLOEXEC);
    if (disk < 0 || ftruncate(disk, 0) != 0 || pwrite(disk, data, size, 0) != ssize_t(size))
        return 0;
    for (const auto &[number, start, length] : diskimages::partitionTable(disk, size))
        if (number < 1 || number > 128 || start == 0 || length == 0 || start >= size || length > size - start)
            std::abort();
    return 0;
}
