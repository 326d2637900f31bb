/// How both tools speak.
#pragma once
#include "Verbs.h"

#include <string>
#include <vector>

namespace diskimages {

using Words = std::vector<std::string>;

/// Runs a verb: 0, or 1 with "TOOL: VERB failed - WHY" on standard error.
/// The signals that ask a program to end are put off: what a verb has begun it finishes, or undoes when its
/// own helper was ended by them.
int runVerb(const char *tool, const char *verb, int (*body)(const Words &), const Words &words);

/// attach [-plist] [-readonly] [-fuse] IMAGE, as hdiutil and hdid have it.
int attachVerb(const Words &words);

}  // namespace diskimages
