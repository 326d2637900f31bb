/// \file
/// The window manager's view of the display: windows, whose they are, which one is active (Extended Window Manager Hints 1.5).
#pragma once
#include "platform/Processes/private/XCB.h"

#include <Tarvik/support/Handle.h>

#include <optional>
#include <string>
#include <vector>

namespace tarvik::processes {

/// A connection to the display of $DISPLAY. Made for a few questions and closed again: it holds nothing of the host's, and a
/// host that forks or changes its display has nothing to mind.
class WindowManager {
public:
    /// Nothing without a display, or without a window manager that keeps these hints.
    static std::optional<WindowManager> connect();

    /// The process of the active window; 0 when there is none.
    pid_t frontProcess() const;
    /// Whether the process has a window, and the manager has been asked to bring its windows to the front.
    bool bringToFront(pid_t pid) const;

private:
    struct ConnectionTraits {
        using Value = xcb_connection_t *;
        static Value empty() { return nullptr; }
        static void close(Value connection) { xcb()->disconnect(connection); }
    };
    enum AtomName {
        kActiveWindow,
        kClientListStacking,
        kPID,
        kState,
        kSkipTaskbar,
        kRestackWindow,
        kClientMachine,
        kAtoms
    };

    WindowManager() = default;
    bool internAtoms();
    xcb_get_property_cookie_t ask(xcb_window_t window, xcb_atom_t property, xcb_atom_t type) const;
    std::vector<uint32_t> numbers(xcb_get_property_cookie_t cookie) const;
    std::string text(xcb_get_property_cookie_t cookie) const;
    /// The process of each window; 0 where it is not told, or runs on another machine.
    std::vector<pid_t> processesOf(const std::vector<xcb_window_t> &windows) const;
    void send(AtomName message, xcb_window_t window, const uint32_t (&data)[3]) const;

    Handle<ConnectionTraits> connection_;
    xcb_window_t root_ = XCB_NONE;
    xcb_atom_t atoms_[kAtoms] = {};
};

}  // namespace tarvik::processes
