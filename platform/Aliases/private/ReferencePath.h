// Between references and paths.
#pragma once
#include <Carbon/Files.h>

#include <string>

namespace tarvik::aliases {

/// The path that a reference leads to; a null reference gives the empty path.
OSErr pathOf(const FSRef *ref, std::string &path);
/// A reference to the item itself: a link at the path's end isn't followed.
OSErr referenceTo(const std::string &path, FSRef *ref, bool *isFolder = nullptr);

}  // namespace tarvik::aliases
