#include "PartitionTable.h"

#include "Bytes.h"

#include <algorithm>
#include <cstring>
#include <span>

namespace diskimages {
namespace {

constexpr uint64_t kSector = 512;
constexpr int kMostPartitions = 128;  // more than that is no table that anybody made

using Sector = std::array<unsigned char, kSector>;

class Table {
public:
    Table(int descriptor, uint64_t diskSize) : descriptor_(descriptor), sectors_(diskSize / kSector) {}

    std::vector<Partition> read()
    {
        const Sector boot = sector(0);
        if (!isBootRecord(boot))
            return {};
        if (std::any_of(kEntries.begin(), kEntries.end(),
                        [&](size_t at) { return boot[at + kType] == kProtective; }))
            readGUIDTable();
        else
            readBootRecord(boot);
        return partitions_;
    }

private:
    static constexpr std::array<size_t, 4> kEntries{446, 462, 478, 494};
    static constexpr size_t kType = 4, kFirst = 8, kCount = 12;  // in an entry
    static constexpr unsigned char kProtective = 0xEE;

    Sector sector(uint64_t number) const { return stretch<kSector>(descriptor_, number * kSector); }

    /// A file system's own boot sector ends in the same two bytes, and has code where the entries are.
    static bool isBootRecord(const Sector &bytes)
    {
        return bytes[510] == 0x55 && bytes[511] == 0xAA &&
               std::all_of(kEntries.begin(), kEntries.end(),
                           [&](size_t at) { return (bytes[at] & 0x7F) == 0; });
    }
    static bool isExtended(unsigned char type) { return type == 0x05 || type == 0x0F || type == 0x85; }

    void add(int number, uint64_t first, uint64_t count)
    {
        if (first > 0 && count > 0 && first < sectors_ && count <= sectors_ - first)
            partitions_.push_back({number, first * kSector, count * kSector});
    }

    void readBootRecord(const Sector &boot)
    {
        uint64_t extended = 0;
        for (size_t i = 0; i < kEntries.size(); ++i) {
            const unsigned char *entry = &boot[kEntries[i]];
            const uint64_t first = number<uint32_t>(entry + kFirst);
            if (isExtended(entry[kType]))
                extended = extended ? extended : first;
            else if (entry[kType] != 0)
                add(int(i) + 1, first, number<uint32_t>(entry + kCount));
        }
        if (extended)
            readExtended(extended);
    }

    /// A chain of records, each with one partition and the place of the next record. One that leads back ends
    /// with the limit.
    void readExtended(uint64_t outermost)
    {
        uint64_t at = outermost;
        for (int number = 5; number <= kMostPartitions && at < sectors_; ++number) {
            const Sector record = sector(at);
            if (!isBootRecord(record))
                return;
            const unsigned char *own = &record[kEntries[0]], *link = &record[kEntries[1]];
            if (own[kType] != 0)
                add(number, at + diskimages::number<uint32_t>(own + kFirst),
                    diskimages::number<uint32_t>(own + kCount));
            const uint64_t next = diskimages::number<uint32_t>(link + kFirst);
            if (!isExtended(link[kType]) || next == 0)
                return;
            at = outermost + next;
        }
    }

    void readGUIDTable()
    {
        Sector header = sector(1);
        const uint64_t headerSize = number<uint32_t>(&header[12]), entriesAt = number<uint64_t>(&header[72]),
                       count = number<uint32_t>(&header[80]), entrySize = number<uint32_t>(&header[84]);
        constexpr uint64_t kLeastHeader = 92, kLeastEntry = 128, kLargestEntry = 4096;
        if (std::memcmp(header.data(), "EFI PART", 8) != 0 || headerSize < kLeastHeader ||
            headerSize > kSector || count == 0 || count > kMostPartitions || entrySize < kLeastEntry ||
            entrySize > kLargestEntry || entriesAt >= sectors_)
            return;
        const uint64_t sum = number<uint32_t>(&header[16]);
        std::fill_n(&header[16], 4, 0);  // the sum is made without itself
        if (crc32({header.data(), headerSize}) != sum)
            return;
        std::vector<unsigned char> entries;
        for (uint64_t at = entriesAt; entries.size() < count * entrySize; ++at) {
            const Sector piece = sector(at);
            entries.insert(entries.end(), piece.begin(), piece.end());
        }
        if (crc32({entries.data(), count * entrySize}) != number<uint32_t>(&header[88]))
            return;
        for (uint64_t i = 0; i < count; ++i) {
            const unsigned char *entry = &entries[i * entrySize];
            const uint64_t first = number<uint64_t>(entry + 32), last = number<uint64_t>(entry + 40);
            const bool isUsed = std::any_of(entry, entry + 16, [](unsigned char byte) { return byte != 0; });
            if (isUsed && last >= first && last < sectors_)
                add(int(i) + 1, first, last - first + 1);
        }
    }

    /// IEEE 802.3, bit by bit: a table has 16 KiB.
    static uint32_t crc32(std::span<const unsigned char> bytes)
    {
        uint32_t sum = ~0u;
        for (const unsigned char byte : bytes) {
            sum ^= byte;
            for (int bit = 0; bit < 8; ++bit)
                sum = sum >> 1 ^ (sum & 1 ? 0xEDB88320 : 0);
        }
        return ~sum;
    }

    int descriptor_;
    uint64_t sectors_;
    std::vector<Partition> partitions_;
};

}  // namespace

std::vector<Partition> partitionTable(int descriptor, uint64_t diskSize)
{
    return Table(descriptor, diskSize).read();
}

}  // namespace diskimages
