/// \file
/// The FSSpec of an item.
#pragma once
#include <Carbon/Files.h>
#include <sys/stat.h>

#include <string>

namespace tarvik::files {

/// The number by which the catalog calls an item; that of a volume's root is fsRtDirID.
uint32_t numberOf(const struct statx &item, bool isVolumeRoot);
/// Whether the item at the path is the root of a volume: the folder above is on another device.
bool isVolumeRoot(const std::string &path, const struct statx &item);
OSErr makeSpec(const std::string &path, const struct statx &item, FSSpec *spec);

}  // namespace tarvik::files
