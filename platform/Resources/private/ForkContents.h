/// \file
/// A file's resource fork as a whole.
#pragma once
#include <Carbon/Files.h>

#include <string>

namespace tarvik::resources {

/// Whether the name is that of the resource fork.
bool isResourceForkName(UniCharCount length, const UniChar *name);
OSErr readResourceFork(const FSRef &ref, std::string &bytes);
/// Replaced whole or not at all.
OSErr writeResourceFork(const FSRef &ref, const std::string &bytes);

}  // namespace tarvik::resources
