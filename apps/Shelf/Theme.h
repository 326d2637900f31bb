/// \file
/// What AppKit draws itself (buttons, scrollers, menus, fields of every panel and alert), flat and with thin lines.
#pragma once

namespace shelf {

/// After the application object is made. A theme that the user has chosen (GSTheme) stays.
void putOnTheme();

}  // namespace shelf
