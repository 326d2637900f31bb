#include "platform/Processes/private/WindowManager.h"

#include <Tarvik/support/Owned.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace tarvik::processes {

namespace {

template <class T>
using Reply = tarvik::Owned<T, std::free>;

constexpr const char *kNames[] = {"_NET_ACTIVE_WINDOW", "_NET_CLIENT_LIST_STACKING",  "_NET_WM_PID",
                                  "_NET_WM_STATE",      "_NET_WM_STATE_SKIP_TASKBAR", "_NET_RESTACK_WINDOW",
                                  "WM_CLIENT_MACHINE"};

// From ICCCM's WM_HINTS: the flag of the window group, and where in the hints it stands.
constexpr uint32_t kWindowGroupHint = 1 << 6;
constexpr size_t kWindowGroup = 8;

// Who asks: a pager or another tool of the user's, whom the manager obeys even when another program has the focus.
constexpr uint32_t kSourceIsTool = 2;

bool isThisMachine(const std::string &name)
{
    char own[HOST_NAME_MAX + 1] = {};
    gethostname(own, sizeof own - 1);
    return name.empty() || name == own || name == "localhost" || name.starts_with(std::string(own) + ".");
}

}  // namespace

std::optional<WindowManager> WindowManager::connect()
{
    const char *display = std::getenv("DISPLAY");
    if (!display || !*display || !xcb())
        return std::nullopt;
    WindowManager manager;
    int screen = 0;
    manager.connection_.reset(xcb()->connect(nullptr, &screen));
    if (xcb()->connection_has_error(manager.connection_.get()))
        return std::nullopt;
    xcb_screen_iterator_t screens = xcb()->setup_roots_iterator(xcb()->get_setup(manager.connection_.get()));
    while (screen-- > 0 && screens.rem > 1)
        xcb()->screen_next(&screens);
    if (screens.rem == 0 || !manager.internAtoms())
        return std::nullopt;
    manager.root_ = screens.data->root;
    return manager;
}

bool WindowManager::internAtoms()
{
    xcb_intern_atom_cookie_t cookies[kAtoms];
    for (int i = 0; i < kAtoms; ++i)
        cookies[i] = xcb()->intern_atom(connection_.get(), true, uint16_t(std::strlen(kNames[i])), kNames[i]);
    for (int i = 0; i < kAtoms; ++i)
        if (const Reply<xcb_intern_atom_reply_t> reply(
                xcb()->intern_atom_reply(connection_.get(), cookies[i], nullptr));
            reply)
            atoms_[i] = reply->atom;
    // Where nobody has ever used these names, nobody keeps the hints.
    return atoms_[kActiveWindow] && atoms_[kClientListStacking] && atoms_[kPID];
}

xcb_get_property_cookie_t WindowManager::ask(xcb_window_t window, xcb_atom_t property, xcb_atom_t type) const
{
    return xcb()->get_property(connection_.get(), false, window, property, type, 0, 1 << 16);
}

std::vector<uint32_t> WindowManager::numbers(xcb_get_property_cookie_t cookie) const
{
    const Reply<xcb_get_property_reply_t> reply(
        xcb()->get_property_reply(connection_.get(), cookie, nullptr));
    if (!reply || reply->format != 32)
        return {};
    const auto *first = static_cast<const uint32_t *>(xcb()->get_property_value(reply.get()));
    return {first, first + xcb()->get_property_value_length(reply.get()) / 4};
}

std::string WindowManager::text(xcb_get_property_cookie_t cookie) const
{
    const Reply<xcb_get_property_reply_t> reply(
        xcb()->get_property_reply(connection_.get(), cookie, nullptr));
    if (!reply || reply->format != 8)
        return "";
    const auto *first = static_cast<const char *>(xcb()->get_property_value(reply.get()));
    const std::string text(first, size_t(xcb()->get_property_value_length(reply.get())));
    return text.substr(0, text.find('\0'));
}

std::vector<pid_t> WindowManager::processesOf(const std::vector<xcb_window_t> &windows) const
{
    // All is asked before the first answer is waited for. Some toolkits, GNUstep's among them, tell the id at the window group's leader only.
    struct Cookies {
        xcb_get_property_cookie_t id, machine, hints;
    };
    std::vector<Cookies> asked;
    for (const xcb_window_t window : windows)
        asked.push_back({ask(window, atoms_[kPID], XCB_ATOM_CARDINAL),
                         ask(window, atoms_[kClientMachine], XCB_ATOM_ANY),
                         ask(window, XCB_ATOM_WM_HINTS, XCB_ATOM_WM_HINTS)});
    std::vector<pid_t> found;
    for (size_t i = 0; i < windows.size(); ++i) {
        std::vector<uint32_t> id = numbers(asked[i].id);
        std::string machine = text(asked[i].machine);
        const std::vector<uint32_t> hints = numbers(asked[i].hints);
        const bool hasLeader = hints.size() > kWindowGroup && hints[0] & kWindowGroupHint &&
                               hints[kWindowGroup] && hints[kWindowGroup] != windows[i];
        if (id.empty() && hasLeader)
            id = numbers(ask(hints[kWindowGroup], atoms_[kPID], XCB_ATOM_CARDINAL));
        if (machine.empty() && hasLeader)
            machine = text(ask(hints[kWindowGroup], atoms_[kClientMachine], XCB_ATOM_ANY));
        found.push_back(id.empty() || !isThisMachine(machine) ? 0 : pid_t(id[0]));
    }
    return found;
}

pid_t WindowManager::frontProcess() const
{
    const std::vector<uint32_t> active = numbers(ask(root_, atoms_[kActiveWindow], XCB_ATOM_WINDOW));
    return active.empty() || !active[0] ? 0 : processesOf({active[0]})[0];
}

bool WindowManager::bringToFront(pid_t pid) const
{
    const std::vector<uint32_t> windows =
        numbers(ask(root_, atoms_[kClientListStacking], XCB_ATOM_WINDOW));  // the lowest first
    const std::vector<pid_t> owners = processesOf(windows);
    std::vector<xcb_window_t> own, minor;
    for (size_t i = 0; i < windows.size(); ++i)
        if (owners[i] == pid) {
            // What a task bar leaves out (GNUstep's icon, palettes) is activated only when there is nothing else.
            const std::vector<uint32_t> state = numbers(ask(windows[i], atoms_[kState], XCB_ATOM_ATOM));
            const bool isMinor = atoms_[kSkipTaskbar] &&
                                 std::find(state.begin(), state.end(), atoms_[kSkipTaskbar]) != state.end();
            (isMinor ? minor : own).push_back(windows[i]);
        }
    if (own.empty())
        own = minor;
    if (own.empty())
        return false;
    if (atoms_[kRestackWindow])
        for (size_t i = 0; i + 1 < own.size(); ++i)
            send(kRestackWindow, own[i], {kSourceIsTool, XCB_NONE, XCB_STACK_MODE_ABOVE});
    send(kActiveWindow, own.back(), {kSourceIsTool, XCB_CURRENT_TIME, XCB_NONE});
    // The server has it all once it answers.
    const Reply<xcb_get_input_focus_reply_t> answer(
        xcb()->get_input_focus_reply(connection_.get(), xcb()->get_input_focus(connection_.get()), nullptr));
    return answer != nullptr;
}

void WindowManager::send(AtomName message, xcb_window_t window, const uint32_t (&data)[3]) const
{
    xcb_client_message_event_t event = {};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atoms_[message];
    std::copy(std::begin(data), std::end(data), event.data.data32);
    xcb()->send_event(connection_.get(), false, root_,
                      XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                      reinterpret_cast<const char *>(&event));
}

}  // namespace tarvik::processes
