// The other process of the event tests. Prints "ready" when it receives, and one line for what it is told to note.
//   tarvik-test-eventpeer              serves until it is told to quit, or standard input ends
//   tarvik-test-eventpeer poll         the same with a loop of its own
//   tarvik-test-eventpeer hasty        ends without an answer when it is told to quit
//   tarvik-test-eventpeer deaf         receives nothing: its handlers are installed, its run loop doesn't run
//   tarvik-test-eventpeer login        a bus with a login manager; its first line is the bus's address
//   tarvik-test-eventpeer raw ANSWER   a socket that answers what comes with these bytes (hexadecimal), or never (no bytes)
#include "platform/AppleEvents/private/StationFolder.h"
#include "tests/support/AppleEvents.h"
#include "tests/support/PrivateBus.h"

#include <Carbon/AEMach.h>
#include <CoreFoundation/CFRunLoop.h>

#include <cstdio>
#include <cstdlib>
#include <poll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using tarvik::OwnedDesc;

namespace {

bool gIsOver = false;
tarvik::OwnedDesc gKeptEvent, gKeptReply;

OSErr quit(const AppleEvent *, AppleEvent *, SRefCon)
{
    gIsOver = true;
    CFRunLoopStop(CFRunLoopGetMain());
    return noErr;
}

/// Gives back what it is given, and says who sent it.
OSErr echo(const AppleEvent *event, AppleEvent *reply, SRefCon)
{
    OwnedDesc object, sender;
    AEGetParamDesc(event, keyDirectObject, typeWildCard, object.out());
    AEPutParamDesc(reply, keyDirectObject, object.get());
    AEGetAttributeDesc(event, keySenderPIDAttr, typeWildCard, sender.out());
    AEPutParamDesc(reply, "sent"_code, sender.get());
    return noErr;
}
OSErr note(const AppleEvent *event, AppleEvent *reply, SRefCon)
{
    std::printf("%s%s\n", textParam(event, keyDirectObject).c_str(), reply->dataHandle ? ", answered" : "");
    std::fflush(stdout);
    return noErr;
}
OSErr die(const AppleEvent *, AppleEvent *, SRefCon) { _exit(3); }
/// Sleeps in pieces of 50 ms and asks for more time after each.
OSErr slow(const AppleEvent *event, AppleEvent *reply, SRefCon)
{
    for (SInt32 left = numberParam(event, keyDirectObject); left > 0; left -= 50) {
        usleep(50000);
        AEResetTimer(reply);
    }
    return noErr;
}
OSErr refuse(const AppleEvent *, AppleEvent *, SRefCon) { return -1234; }
/// A result that no message holds.
OSErr huge(const AppleEvent *, AppleEvent *reply, SRefCon)
{
    const std::string bytes(size_t(65) << 20, 'x');
    return AEPutParamPtr(reply, keyDirectObject, typeText, bytes.data(), Size(bytes.size()));
}
/// Answers later, on another thread.
OSErr later(const AppleEvent *event, AppleEvent *reply, SRefCon)
{
    AEDuplicateDesc(event, gKeptEvent.out());
    AEDuplicateDesc(reply, gKeptReply.out());
    std::thread([] {
        usleep(30000);
        AEPutParamPtr(gKeptReply.get(), keyDirectObject, typeUTF8Text, "late", 4);
        AEResumeTheCurrentEvent(gKeptEvent.get(), gKeptReply.get(), kAENoDispatch, 0);
    }).detach();
    return AESuspendTheCurrentEvent(event);
}
/// Asks the sender something before it answers.
OSErr askBack(const AppleEvent *event, AppleEvent *reply, SRefCon)
{
    OwnedDesc sender, question, answer;
    AEGetAttributeDesc(event, keyAddressAttr, typeWildCard, sender.out());
    AECreateAppleEvent("test"_code, "name"_code, sender.get(), kAutoGenerateReturnID, kAnyTransactionID,
                       question.out());
    const OSErr error = OSErr(AESendMessage(question.get(), answer.out(), kAEWaitReply, 120));
    const std::string name = textParam(answer.get(), keyDirectObject);
    return error ? error
                 : AEPutParamPtr(reply, keyDirectObject, typeUTF8Text, name.data(), Size(name.size()));
}

void say(const std::string &text)
{
    std::printf("%s\n", text.c_str());
    std::fflush(stdout);
}

void noteCall(GDBusConnection *, const char *, const char *, const char *, const char *method,
              GVariant *arguments, GDBusMethodInvocation *call, void *)
{
    const std::string name = method;
    if (name.starts_with("Can"))
        return g_dbus_method_invocation_return_value(call,
                                                     g_variant_new("(s)", name == "CanReboot" ? "challenge"
                                                                          : name == "CanPowerOff" ? "no"
                                                                                                  : "na"));
    char *text = g_variant_print(arguments, false);
    say(name + text);
    g_free(text);
    g_dbus_method_invocation_return_value(call, nullptr);
}

/// A bus with a login manager and a session manager that do nothing but say what they were asked for. First it says its address.
int serveLogin()
{
    std::string address;
    GDBusConnection *bus = startPrivateBus(address);
    static const char *const kLogin =
        "<node><interface name='org.freedesktop.login1.Manager'>"
        "<method name='CanReboot'><arg type='s' direction='out'/></method><method name='CanPowerOff'><arg "
        "type='s' direction='out'/></method>"
        "<method name='CanSuspend'><arg type='s' direction='out'/></method><method name='Reboot'><arg "
        "type='b' direction='in'/></method>"
        "<method name='PowerOff'><arg type='b' direction='in'/></method></interface></node>";
    static const char *const kSession =
        "<node><interface name='org.gnome.SessionManager'><method name='Logout'><arg type='u' "
        "direction='in'/></method></interface></node>";
    if (!bus || !exportObject(bus, "/org/freedesktop/login1", kLogin, noteCall) ||
        !exportObject(bus, "/org/gnome/SessionManager", kSession, noteCall))
        return 1;
    for (const char *name : {"org.freedesktop.login1", "org.gnome.SessionManager"}) {
        GVariant *owned = g_dbus_connection_call_sync(
            bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
            g_variant_new("(su)", name, 0u), nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
        if (!owned)
            return 1;
        g_variant_unref(owned);
    }
    say(address);
    g_main_loop_run(g_main_loop_new(nullptr, false));
    return 0;
}

int answerRaw(const std::string &hex)
{
    const tarvik::ae::StationFolder folder;
    const tarvik::FileDescriptor listening = folder.openOwn();
    if (!listening)
        return 1;
    say("ready");
    pollfd coming = {listening.get(), POLLIN, 0};
    poll(&coming, 1, -1);
    const tarvik::FileDescriptor socket(accept(listening.get(), nullptr, nullptr));
    char received[4096];
    const ssize_t length = read(socket.get(), received, sizeof received);
    std::string answer;
    for (size_t i = 0; i + 1 < hex.size(); i += 2)
        answer += hex.substr(i, 2) == "**"
                      ? received[i / 2]
                      : char(std::stoi(hex.substr(i, 2), nullptr, 16));  // "**": as it came
    if (length > 0 && write(socket.get(), answer.data(), answer.size()) >= 0)
        pause();
    return 0;
}

}  // namespace

int main(int argc, char **argv)
{
    const std::string mode = argc > 1 ? argv[1] : "";
    if (mode == "raw")
        return answerRaw(argc > 2 ? argv[2] : "");
    if (mode == "login")
        return serveLogin();
    const struct {
        FourCharCode id;
        AEEventHandlerUPP handler;
    } handlers[] = {{"echo"_code, echo},   {"note"_code, note}, {"die "_code, die},   {"slow"_code, slow},
                    {"refu"_code, refuse}, {"huge"_code, huge}, {"late"_code, later}, {"back"_code, askBack}};
    for (const auto &[id, handler] : handlers)
        AEInstallEventHandler("test"_code, id, handler, 0, false);
    AEInstallEventHandler(kCoreEventClass, kAEQuitApplication, mode == "hasty" ? die : quit, 0, false);
    say("ready");
    if (mode == "deaf")
        pause();
    while (mode == "poll" && !gIsOver)
        if (AEProcessAppleEvent(nullptr) == noOutstandingHLE)
            usleep(1000);
    while (!gIsOver)
        CFRunLoopRun();
    return 0;
}
