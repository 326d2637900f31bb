// Files as the commands name them: paths in bytes, references, errors in words.
#pragma once
#include "Command.h"

#include <Tarvik/Tarvik.h>

#include <string>

/// The item at a path, links followed unless the options (of FSPathMakeRefWithOptions) say otherwise. Throws Failure.
FSRef itemAt(const std::string &path, OptionBits options = kFSPathMakeRefDefaultOptions);
/// Its path now, for people.
std::string pathOfItem(const FSRef &ref);
/// What the catalog says. Throws Failure.
FSCatalogInfo catalogOf(const FSRef &ref, FSCatalogInfoBitmap which, const std::string &path);
/// "PATH: why".
Failure fileFailure(const std::string &path, OSStatus error);
/// Runs the work on each path; one that fails is told of and does not keep the others from being done.
int forEachFile(const char *command, const std::vector<std::string> &paths,
                const std::function<void(const std::string &)> &work);
