/// \file
/// The resource-fork format, read and written.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarvik::resources {

struct Resource {
    uint32_t type;
    int16_t id;
    uint8_t attributes;
    std::optional<std::string> name;  // at most 255 bytes, as they stand in the file
    std::string data;                 // in the file's order
};

/// The resources of a fork, in the order of its map; nothing for bytes that are not in the format (an offset, count or length
/// that leads out of its place). No bytes at all are a fork without resources.
std::optional<std::vector<Resource>> parseFork(std::string_view bytes);

/// The fork of these resources; nothing when they do not fit the format (16 MiB of data, 64 KiB of references or names,
/// 2,727 types).
std::optional<std::string> forkOf(const std::vector<Resource> &resources);

}  // namespace tarvik::resources
