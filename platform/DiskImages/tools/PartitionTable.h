/// The partitions of a disk: the master boot record's, with those of its extended partitions, or the GUID
/// table's (UEFI 2.10, chapter 5). Read here rather than left to the kernel: many kernels are built without
/// any of the two.
#pragma once
#include <cstdint>
#include <vector>

namespace diskimages {

struct Partition {
    int number;  ///< as the kernel counts: 1 to 4 and from 5 on in an extended one, or the place in the GUID
                 ///< table
    uint64_t start, length;  ///< in bytes, inside the disk
};

/// Empty for a disk without a table, and for a table that is damaged. An entry that doesn't lie inside the
/// disk is left out. Throws Failure when the disk can't be read.
std::vector<Partition> partitionTable(int descriptor, uint64_t diskSize);

}  // namespace diskimages
