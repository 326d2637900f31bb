/// \file
/// Items by folder and name.
#pragma once
#include "platform/Files/private/Names.h"
#include "platform/Files/private/References.h"

#include <string>

namespace tarvik::files {

/// The path of a reference to a folder; errFSNotAFolder.
OSErr locateFolder(const FSRef *ref, std::string &path, struct statx *found = nullptr);
/// The name that an item has in the folder: the one given, or the normal form under which it stands there. The one given when
/// there is none.
std::string existingName(const std::string &folder, const std::string &name);

}  // namespace tarvik::files
