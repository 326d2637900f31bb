// The texts of --help and of the manual page.
#pragma once
#include "Command.h"

/// The help of a command reached by `path` ("tarvik xml value").
std::string helpText(const std::string &path, const Command &command);
/// The help of the program itself.
std::string programHelp();
