// For commands that speak to the toolkit's Objective-C interface: words as strings, and a pool around the work.
#pragma once
#include "Command.h"

#import <Foundation/NSString.h>

/// A word of the command line (or any other bytes, called `name` in the message) as a string. Throws Failure when it is
/// not UTF-8.
NSString *textOf(const std::string &word);
NSString *textOf(const std::string &bytes, const std::string &name);
/// The whole of a file ("-": standard input) as a string. Throws Failure.
NSString *textInFile(const std::string &path);
/// The UTF-8 form; empty for nil and for text that has none.
std::string utf8Of(NSString *text);
/// A command's function with an autorelease pool around it.
std::function<int(const Arguments &)> inPool(int (*run)(const Arguments &));
