// Property lists for the commands: shown as a tree, or as XML.
#pragma once
#include "Command.h"

#import <Foundation/NSObject.h>

/// The list in a file ("-": standard input), autoreleased. Throws Failure.
id readList(const std::string &path);
/// The same of bytes; `name` is what the message calls them.
id parseList(const std::string &bytes, const std::string &name);
/// A tree for people, one entry a line. A leaf: its plain text, and a line end.
std::string showList(id list);
/// XML text. Throws Failure.
std::string xmlOfList(id list);
