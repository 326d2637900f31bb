/// \file
/// Paths in the style of the older file system: "Disk:usr:bin" for "/usr/bin".
///
/// The volume's name comes first: the label of the file system at "/" (or "Disk"), the last part of the mount
/// point of another one. Colons divide the parts; a slash in a part stands for the POSIX name's colon. A
/// leading colon makes a path relative, each further one goes a folder up.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarvik::hfs {

std::string fromPosix(std::string_view path);
/// Nothing for an empty path and for a volume that is not there.
std::optional<std::string> toPosix(std::string_view path);

}  // namespace tarvik::hfs
