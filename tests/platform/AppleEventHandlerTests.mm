// Handlers, and events to oneself.
#import <Foundation/Foundation.h>

#include <Carbon/AEInteraction.h>
#include <Carbon/AEMach.h>
#include <Carbon/Processes.h>
#include <Tarvik/support/OwnedDesc.h>
#include <gtest/gtest.h>

#include "tests/support/AppleEvents.h"

#include <stdexcept>
#include <string>
#include <unistd.h>
#include <vector>

using tarvik::OwnedDesc;

namespace {

constexpr AEEventClass kTest = "test"_code;

OwnedDesc event(AEEventID id, const AEDesc *target = nullptr)
{
    OwnedDesc made;
    EXPECT_EQ(AECreateAppleEvent(kTest, id, target, kAutoGenerateReturnID, kAnyTransactionID, made.out()),
              noErr);
    return made;
}

std::vector<SRefCon> gCalls;

OSErr called(const AppleEvent *, AppleEvent *reply, SRefCon refcon)
{
    gCalls.push_back(refcon);
    const SInt32 n = SInt32(refcon);
    AEPutParamPtr(reply, keyDirectObject, typeSInt32, &n, sizeof n);
    return noErr;
}
OSErr passes(const AppleEvent *, AppleEvent *, SRefCon refcon)
{
    return gCalls.push_back(refcon), OSErr(errAEEventNotHandled);
}
OSErr fails(const AppleEvent *, AppleEvent *, SRefCon refcon) { return OSErr(refcon); }
OSErr raises(const AppleEvent *, AppleEvent *, SRefCon)
{
    [NSException raise:NSGenericException format:@"no such book"];
    return noErr;
}
OSErr throws(const AppleEvent *, AppleEvent *, SRefCon) { throw std::runtime_error("out of ink"); }

}  // namespace

TEST(AppleEventHandlerTest, TheMostParticularOneIsCalledFirst)
{
    const struct {
        AEEventClass first;
        AEEventID second;
        Boolean isSystem;
        AEEventHandlerUPP function;
    } installed[] = {{typeWildCard, typeWildCard, true, called},  {kTest, "one "_code, false, passes},
                     {kTest, typeWildCard, false, passes},        {typeWildCard, "one "_code, false, passes},
                     {typeWildCard, typeWildCard, false, passes}, {kTest, "one "_code, true, passes}};
    for (const auto &one : installed)
        ASSERT_EQ(AEInstallEventHandler(one.first, one.second, one.function, SRefCon(&one - installed),
                                        one.isSystem),
                  noErr);
    OwnedDesc reply;
    EXPECT_EQ(AESendMessage(event("one "_code).get(), reply.out(), kAEWaitReply, kAEDefaultTimeout), noErr);
    EXPECT_EQ(gCalls, std::vector<SRefCon>({1, 2, 3, 4, 5, 0}));
    EXPECT_EQ(numberParam(reply.get(), keyDirectObject), 0);

    AEEventHandlerUPP known = nullptr;
    SRefCon refcon = 0;
    EXPECT_EQ(AEGetEventHandler(kTest, "two "_code, &known, &refcon, false),
              errAEHandlerNotFound);  // a wild card serves, but is not it
    EXPECT_EQ(AEGetEventHandler(kTest, typeWildCard, &known, &refcon, false), noErr);
    EXPECT_EQ(refcon, 2);
    EXPECT_EQ(AERemoveEventHandler(kTest, "one "_code, called, false),
              errAEHandlerNotFound);  // another one's
    EXPECT_EQ(AERemoveEventHandler(kTest, "one "_code, passes, false), noErr);
    EXPECT_EQ(AERemoveEventHandler(kTest, "one "_code, nullptr, false), errAEHandlerNotFound);

    ASSERT_EQ(AEInstallSpecialHandler(keyPreDispatch, called, false), noErr);
    gCalls.clear();
    AESendMessage(event("one "_code).get(), reply.out(), kAEWaitReply, kAEDefaultTimeout);
    EXPECT_EQ(gCalls.size(), 1u);
    EXPECT_EQ(AERemoveSpecialHandler(keyPreDispatch, called, false), noErr);
    EXPECT_EQ(AEInstallSpecialHandler("othr"_code, called, false), errAENotASpecialFunction);
}

TEST(AppleEventHandlerTest, FailuresStandInTheReply)
{
    AEInstallEventHandler(kTest, "fail"_code, fails, -1234, false);
    AEInstallEventHandler(kTest, "rais"_code, raises, 0, false);
    AEInstallEventHandler(kTest, "thro"_code, throws, 0, false);
    OwnedDesc reply;
    EXPECT_EQ(AESendMessage(event("fail"_code).get(), reply.out(), kAEWaitReply, 60), noErr);
    EXPECT_EQ(numberParam(reply.get(), keyErrorNumber), -1234);
    EXPECT_EQ(AESendMessage(event("rais"_code).get(), reply.out(), kAEWaitReply, 60), noErr);
    EXPECT_EQ(numberParam(reply.get(), keyErrorNumber), errAEEventFailed);
    EXPECT_EQ(textParam(reply.get(), keyErrorString), "no such book");
    AESendMessage(event("thro"_code).get(), reply.out(), kAEWaitReply, 60);
    EXPECT_EQ(textParam(reply.get(), keyErrorString), "out of ink");
    EXPECT_EQ(AESendMessage(event("none"_code).get(), reply.out(), kAEWaitReply, 60), errAEEventNotHandled);
    EXPECT_EQ(numberParam(reply.get(), keyErrorNumber), errAEEventNotHandled);
}

TEST(AppleEventHandlerTest, WhatAHandlerSees)
{
    static struct {
        SInt16 source;
        Boolean wanted;
        DescType reply;
        bool sameEvent;
    } seen;
    static const auto look = [](const AppleEvent *event, AppleEvent *reply, SRefCon) -> OSErr {
        OwnedDesc current;
        AEGetTheCurrentEvent(current.out());
        AEGetAttributePtr(event, keyEventSourceAttr, typeSInt16, nullptr, &seen.source, sizeof seen.source,
                          nullptr);
        AEGetAttributePtr(event, keyReplyRequestedAttr, typeBoolean, nullptr, &seen.wanted, 1, nullptr);
        SInt32 here = -1, there = -2;
        AEGetAttributePtr(event, keyReturnIDAttr, typeSInt32, nullptr, &here, 4, nullptr);
        AEGetAttributePtr(current.get(), keyReturnIDAttr, typeSInt32, nullptr, &there, 4, nullptr);
        seen.reply = reply->descriptorType;
        seen.sameEvent = here == there;
        return noErr;
    };
    AEInstallEventHandler(kTest, "look"_code, NewAEEventHandlerUPP(look), 0, false);
    OwnedDesc reply, current;
    EXPECT_EQ(AESendMessage(event("look"_code).get(), reply.out(), kAEWaitReply, 60), noErr);
    EXPECT_TRUE(seen.source == kAEDirectCall && seen.wanted && seen.reply == typeAppleEvent &&
                seen.sameEvent);
    EXPECT_EQ(AESendMessage(event("look"_code).get(), nullptr, kAENoReply, 60), noErr);
    EXPECT_TRUE(!seen.wanted && seen.reply == typeNull);
    EXPECT_EQ(AEGetTheCurrentEvent(current.out()), noErr);
    EXPECT_EQ(current->descriptorType, DescType(typeNull));
}

TEST(AppleEventHandlerTest, AllAddressesOfOneself)
{
    AEInstallEventHandler(kTest, "mine"_code, called, 7, false);
    ProcessSerialNumber current = {0, kCurrentProcess}, own;
    const SInt32 pid = getpid();
    ASSERT_EQ(GetCurrentProcess(&own), noErr);
    OwnedDesc targets[3], reply;
    AECreateDesc(typeProcessSerialNumber, &current, sizeof current, targets[0].out());
    AECreateDesc(typeProcessSerialNumber, &own, sizeof own, targets[1].out());
    AECreateDesc(typeKernelProcessID, &pid, sizeof pid, targets[2].out());
    for (const OwnedDesc &target : targets) {
        EXPECT_EQ(AESendMessage(event("mine"_code, target.get()).get(), reply.out(), kAEWaitReply, 60),
                  noErr);
        EXPECT_EQ(numberParam(reply.get(), keyDirectObject), 7);
    }

    OwnedDesc strange;
    AECreateDesc("what"_code, "x", 1, strange.out());
    EXPECT_EQ(AESendMessage(event("mine"_code, strange.get()).get(), reply.out(), kAEWaitReply, 60),
              errAEUnknownAddressType);
    AECreateDesc(typeKernelProcessID, "x", 1, strange.out());
    EXPECT_EQ(AESendMessage(event("mine"_code, strange.get()).get(), reply.out(), kAEWaitReply, 60),
              errAECorruptData);
    EXPECT_EQ(AESendMessage(event("mine"_code).get(), reply.out(), 0, 60), errAEUnknownSendMode);
    EXPECT_EQ(AESendMessage(event("mine"_code).get(), nullptr, kAEWaitReply, 60), paramErr);
    EXPECT_EQ(AESendMessage(targets[0].get(), reply.out(), kAEWaitReply, 60), errAENotAppleEvent);
}
