/// Well-known folders as paths; what FSFindFolder and its kin stand on.
#pragma once
#include <Carbon/Folders.h>

#include <string>

/// See FSFindFolderPath; the path is empty after a failure.
OSErr findFolder(SInt16 domain, OSType folderType, bool create, std::string &path);
