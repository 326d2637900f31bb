/// \file
/// Bytes from file to file.
#pragma once
#include <cstdint>
#include <functional>

namespace tarvik::files {

/// Told of each piece that has been copied, by its length; false ends the copy with ECANCELED.
using CopyWatch = std::function<bool(uint64_t)>;

/// Copies a stretch: shared blocks or a copy inside the kernel where there is one, else through a buffer. 0 or errno; EIO when the
/// source ends early.
int copyBytes(int from, uint64_t fromOffset, int to, uint64_t toOffset, uint64_t length,
              const CopyWatch &watch = {});
/// Makes the whole of a file the contents of another one, holes kept. 0 or errno.
int copyFile(int from, int to, const CopyWatch &watch = {});
/// Writes all bytes at the offset. 0 or errno.
int writeAll(int file, const void *bytes, uint64_t length, uint64_t offset);

}  // namespace tarvik::files
