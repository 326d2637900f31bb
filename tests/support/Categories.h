// Category methods are global: which of a library's take the place of somebody else's.
#pragma once
#include <set>
#include <string>

/// The methods ("-[NSString size]") that the library, named by a part of its file's name, defines on a class of another
/// library although that class, one above or one below it has a method of that name already.
std::set<std::string> methodsReplacedBy(const std::string &library);
