// Passwords and keys, for the commands: from files, the environment or the terminal rather than from the
// command line, which other users see in the list of processes.
#pragma once
#include "Command.h"

#include <cstdint>
#include <string>
#include <vector>

/// --password-file and --password-env.
std::vector<Option> passwordOptions();
/// The password that the options name, else the one that is typed in (twice when `confirm`). Throws
/// UsageError when there is no terminal to ask on, Failure when it can't be had.
std::string passwordFrom(const Arguments &arguments, bool confirm);

/// --key-file and --key, for a key of so many bytes.
std::vector<Option> keyOptions(size_t length);
/// The key that the options name. Throws UsageError or Failure.
std::vector<uint8_t> keyFrom(const Arguments &arguments, size_t length);
/// Whether the text is made of so many hexadecimal digits.
bool isHexadecimal(std::string_view text);
