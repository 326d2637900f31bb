// Lists of checks in the form of md5sum and its kin: printed for files, or read and verified.
//
//     900150983cd24fb0d6963f7d28e17f72  letter.txt
//
// A name stands in one line: a backslash before the check says that those in the name are doubled and line
// ends written \n.
#pragma once
#include "Command.h"

#include <functional>
#include <string>
#include <vector>

struct CheckKind {
    std::string command;  // what messages begin with
    std::string form;     // what a check looks like: "a check has eight hexadecimal digits"
    std::function<bool(size_t digits)> takes;  // whether a check of so many digits is of this kind
    // The check of a file as lowercase digits: so many of them when it is to be compared, 0 when it is to be
    // printed. Throws Failure.
    std::function<std::string(const std::string &path, size_t digits)> compute;
};

/// --check and --quiet.
std::vector<Option> checkOptions();
/// Prints the checks of the files in the arguments (of standard input when there are none); with --check,
/// verifies those that the files list.
int printOrVerify(const Arguments &arguments, const CheckKind &kind);
