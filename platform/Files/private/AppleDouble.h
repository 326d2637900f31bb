/// \file
/// The AppleDouble header file (RFC 1740, appendix A and B): what belongs to a file besides its contents.
///
///     magic 0x00051607, version 0x00020000, 16 bytes filler, number of entries (16 bits),
///     then for each entry: id, offset, length (32 bits each); all big-endian; the entries' bytes anywhere behind.
///
/// Used here: entry 2, the resource fork; 8, dates; 9, Finder information (32 bytes, more behind them in files of another system,
/// which hold offsets of their own and can't be moved). All others are kept as they are.
#pragma once
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarvik::files {

constexpr size_t kFinderInfoSize = 32, kDatesSize = 16;
using FinderInfo = std::array<uint8_t, kFinderInfoSize>;

struct AppleDouble {
    enum Id : uint32_t { resourceFork = 2, dates = 8, finderInfo = 9 };
    struct Entry {
        uint32_t id;
        uint32_t offset;
        uint32_t length;
    };
    uint32_t version = 0x00020000;
    std::array<uint8_t, 16> filler{};
    std::vector<Entry> entries;

    Entry *find(uint32_t id);
    const Entry *find(uint32_t id) const { return const_cast<AppleDouble *>(this)->find(id); }
    /// Where the header ends.
    size_t headerSize() const { return 26 + 12 * entries.size(); }
    std::string header() const;
};

enum class AppleDoubleState { foreign, broken, good };
/// As many bytes as a header can have.
constexpr size_t kMostEntries = 64, kLargestHeader = 26 + 12 * kMostEntries;
/// Reads the header from the file's first bytes. Broken: entries outside the file, over one another or over the header, an id
/// twice, Finder information or dates that are too short, too many entries.
AppleDoubleState readAppleDouble(std::string_view start, uint64_t fileSize, AppleDouble &file);

/// Gives each entry its place for new lengths, the resource fork last, the others where they were as far as there is room.
/// False when Finder information that can't be moved would have to, or the file grew beyond 4 GiB.
bool layOut(AppleDouble &file);

/// The 286 bytes that another system writes for "no resource fork".
bool isBlankResourceFork(std::string_view start, uint64_t length);

}  // namespace tarvik::files
