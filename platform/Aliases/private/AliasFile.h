// Files that stand for another: symbolic links, and desktop entries of type Link.
#pragma once
#include <Carbon/MacTypes.h>

#include <optional>
#include <string>
#include <string_view>

#include <sys/types.h>

namespace tarvik::aliases {

/// The item that an alias file names, one step further, as an absolute path; nothing for what is no alias file.
std::optional<std::string> aliasFileTarget(const std::string &path);
/// The same of an item whose mode is known: most are told without being read.
std::optional<std::string> aliasFileTarget(const std::string &path, mode_t mode);
/// The end of the chain. fnfErr: it leads nowhere; bdNamErr: it has no end.
OSErr followAliasFiles(std::string &path, bool wholeChain, bool &wasAliased);

/// A desktop entry's kind, from its text: "Link", "Application", ...; `url` receives its URL.
std::string desktopEntryType(std::string_view text, std::string *url = nullptr);
/// The same of a file, of which the beginning is read; empty for what is none.
std::string desktopEntryTypeOfFile(const std::string &path, std::string *url = nullptr);
/// The path that a file URL of this machine names; nothing for other URLs.
std::optional<std::string> pathOfFileURL(std::string_view url);

}  // namespace tarvik::aliases
