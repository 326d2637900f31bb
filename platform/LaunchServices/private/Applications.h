// The applications of this system: desktop entries and GNUstep's folders.
#pragma once
#include <Carbon/LSOpen.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarvik::launch {

// The desktop's, through GIO. An application is the path of its desktop entry.

/// What opens a file (by its MIME type) or another URL (by its scheme).
/// Entries say nothing of roles: one of the category Viewer views, any other views and edits. When the user's choice has none of the roles, the
/// first that has one.
std::optional<std::string> desktopApplicationFor(const std::string &url, bool isFile, LSRolesMask roles);
/// Of an identifier, with or without ".desktop".
std::optional<std::string> desktopApplicationNamed(const std::string &identifier);
OSStatus launchDesktopApplication(const std::string &entry, const std::vector<std::string> &urls);
/// The URL of a path, whatever bytes it has.
std::string fileURL(const std::string &path);

// GNUstep's. An application is the path of its folder.

/// By what it says of its document types, in Mac OS X's words too; it opens in any role what it names none for.
std::optional<std::string> folderApplicationFor(std::string_view extension, LSRolesMask roles);
std::optional<std::string> folderApplicationNamed(std::string_view name);
std::optional<std::string> folderApplicationIdentified(std::string_view bundleIdentifier);
std::optional<std::string> folderApplicationSigned(OSType creator);
OSStatus launchFolderApplication(const std::string &folder, const std::vector<std::string> &paths,
                                 bool prints);

}  // namespace tarvik::launch
