// The desktop's file manager.
#pragma once
#include <string>

namespace tarvik {

/// Asks the running or startable file manager (D-Bus, org.freedesktop.FileManager1) to show the item; false when there is none.
bool revealInFileViewer(const std::string &path);

}  // namespace tarvik
