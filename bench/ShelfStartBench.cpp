// How long Shelf takes from its execution until its window is on the display, beside an application that shows a window only.
#include <benchmark/benchmark.h>

#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <Tarvik/support/Owned.h>
#include <chrono>
#include <string>

#include <csignal>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience(20);
constexpr int kLeast = 300;  // points: what is narrower is not the application's main window

/// What happens on the display, seen from outside.
class Observer {
public:
    Observer() : display_(XOpenDisplay(nullptr))
    {
        XSetErrorHandler([](Display *, XErrorEvent *) { return 0; });  // windows go while one looks at them
        if (display_)
            XSelectInput(display_.get(), DefaultRootWindow(display_.get()), SubstructureNotifyMask);
    }
    explicit operator bool() const { return display_ != nullptr; }
    void forget() { XSync(display_.get(), True); }
    /// Waits until a window of the title is on the display, in a window manager's frame or bare.
    bool await(const std::string &title)
    {
        for (const auto end = Clock::now() + kPatience; Clock::now() < end;) {
            if (XPending(display_.get()) == 0) {
                pollfd input = {ConnectionNumber(display_.get()), POLLIN, 0};
                poll(&input, 1, 100);
                continue;
            }
            XEvent event;
            XNextEvent(display_.get(), &event);
            if (event.type == MapNotify && shows(event.xmap.window, title, 2))
                return true;
        }
        return false;
    }

private:
    bool shows(Window window, const std::string &title, int depth)
    {
        XWindowAttributes is;
        if (titleOf(window) == title && XGetWindowAttributes(display_.get(), window, &is) &&
            is.map_state == IsViewable && is.width >= kLeast)
            return true;
        Window root, parent, *children = nullptr;
        unsigned count = 0;
        bool found = false;
        if (depth > 0 && XQueryTree(display_.get(), window, &root, &parent, &children, &count)) {
            for (unsigned i = 0; i < count && !found; ++i)
                found = shows(children[i], title, depth - 1);
            if (children)
                XFree(children);
        }
        return found;
    }
    std::string titleOf(Window window)
    {
        Atom type;
        int format;
        unsigned long count = 0, left;
        unsigned char *bytes = nullptr;
        const Atom name = XInternAtom(display_.get(), "_NET_WM_NAME", False);
        std::string title;
        if (XGetWindowProperty(display_.get(), window, name, 0, 64, False, AnyPropertyType, &type, &format,
                               &count, &left, &bytes) == Success &&
            bytes) {
            title.assign(reinterpret_cast<char *>(bytes), count);
            XFree(bytes);
        }
        return title;
    }

    tarvik::Owned<Display, XCloseDisplay> display_;
};

void start(benchmark::State &state, std::string program, const std::string &title)
{
    Observer observer;
    if (!observer)
        return state.SkipWithError("there is no display");
    // The first start, unmeasured, also starts AppKit's daemons.
    for (bool isFirst = true; isFirst || state.KeepRunning(); isFirst = false) {
        observer.forget();
        char *argv[] = {program.data(), nullptr};
        pid_t process = 0;
        const auto before = Clock::now();
        if (posix_spawn(&process, program.c_str(), nullptr, nullptr, argv, environ) != 0)
            return state.SkipWithError("it can't be started");
        const bool isShown = observer.await(title);
        const std::chrono::duration<double> time = Clock::now() - before;
        kill(process, SIGKILL);  // one that has not started to listen to others yet may not hear them
        waitpid(process, nullptr, 0);
        if (!isShown)
            return state.SkipWithError("its window did not appear");
        if (!isFirst)
            state.SetIterationTime(time.count());
    }
}

BENCHMARK_CAPTURE(start, shelf, TARVIK_BENCH_SHELF, "Shelf")
    ->Name("shelf/start:tarvik")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5);
BENCHMARK_CAPTURE(start, empty, TARVIK_BENCH_EMPTYAPP, "Empty")
    ->Name("shelf/start:empty AppKit")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5);

}  // namespace
