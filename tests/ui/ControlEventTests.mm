#import <AppKit/AppKit.h>
#import <Tarvik/TarvikUI.h>
#include <gtest/gtest.h>
#include <tests/support/AppleEvents.h>
#include <tests/ui/Desktop.h>

namespace {

struct Seen {
    UInt32 hit = 0, processed = 0;
    OSStatus answer = noErr;
};

OSStatus see(EventHandlerCallRef, EventRef event, void *userData)
{
    auto *seen = static_cast<Seen *>(userData);
    HICommand command = {};
    if (GetEventClass(event) == kEventClassControl) {
        seen->hit = EventGetControlCommandID(event);
        return seen->answer;
    }
    if (GetEventParameter(event, kEventParamDirectObject, typeHICommand, nullptr, sizeof command, nullptr,
                          &command) == noErr)
        seen->processed = command.commandID;
    return noErr;
}

TEST(ControlEvent, TellsTheCommandOfItsControl)
{
    const TestWindow window;
    NSButton *button = window.add([[[NSButton alloc] initWithFrame:NSMakeRect(20, 20, 80, 30)] autorelease]);
    const ControlRef control = [button controlRef];
    EXPECT_EQ(SetControlCommandID(control, "save"_code), noErr);
    const EventTypeSpec type = EventTypeSpecMake("cntl"_code, 13);
    EXPECT_EQ(type.eventClass, "cntl"_code);
    EXPECT_EQ(type.eventKind, 13u);
    EventRef event = nullptr;
    ASSERT_EQ(CreateEvent(nullptr, type.eventClass, type.eventKind, 0, kEventAttributeNone, &event), noErr);
    EXPECT_EQ(EventGetControlCommandID(event), 0u);  // about nothing
    ASSERT_EQ(SetEventParameter(event, kEventParamDirectObject, typeControlRef, sizeof control, &control),
              noErr);
    EXPECT_EQ(EventGetControlCommandID(event), "save"_code);
    const ControlRef unknown = reinterpret_cast<ControlRef>(uintptr_t(16));
    ASSERT_EQ(SetEventParameter(event, kEventParamDirectObject, typeControlRef, sizeof unknown, &unknown),
              noErr);
    EXPECT_EQ(EventGetControlCommandID(event), 0u);
    ASSERT_EQ(SetEventParameter(event, kEventParamDirectObject, typeHICommand, sizeof control, &control),
              noErr);
    EXPECT_EQ(EventGetControlCommandID(event), 0u);  // about something else
    ReleaseEvent(event);
    EXPECT_EQ(EventGetControlCommandID(nullptr), 0u);
}

TEST(ControlEvent, AClickReachesTheWindowsHandlers)
{
    const TestWindow window;
    NSButton *button = window.add([[[NSButton alloc] initWithFrame:NSMakeRect(20, 20, 80, 30)] autorelease]);
    ASSERT_EQ(SetControlCommandID([button controlRef], "save"_code), noErr);
    Seen seen;
    const EventTypeSpec types[] = {EventTypeSpecMake(kEventClassControl, kEventControlHit),
                                   EventTypeSpecMake(kEventClassCommand, kEventCommandProcess)};
    EventHandlerRef handler = nullptr;
    ASSERT_EQ(InstallEventHandler(GetWindowEventTarget((WindowRef)[window.get() windowRef]), see, 2, types,
                                  &seen, &handler),
              noErr);
    window.show();
    {
        const Hand hand("mousemove " + middleOf(button) + " sleep 0.1 mousedown 1 sleep 0.1 mouseup 1");
        EXPECT_TRUE(eventually([&] { return seen.hit != 0; }));
    }
    EXPECT_EQ(seen.hit, "save"_code);
    EXPECT_EQ(seen.processed, 0u);
    seen.answer = eventNotHandledErr;  // a hit that nobody takes becomes the command
    [button performClick:nil];
    EXPECT_EQ(seen.processed, "save"_code);
    RemoveEventHandler(handler);
}

}  // namespace
