// A target and its handlers. Who has one in a record ends it with the record.
#pragma once
#include <Carbon/CarbonEvents.h>

#include <memory>
#include <vector>

struct OpaqueEventHandlerRef {
    OpaqueEventTargetRef *target;
    EventHandlerUPP handler;
    std::vector<EventTypeSpec> types;
    void *userData;
};

struct OpaqueEventTargetRef {
    explicit OpaqueEventTargetRef(OpaqueEventTargetRef *aNext = nullptr);
    ~OpaqueEventTargetRef();
    OpaqueEventTargetRef(const OpaqueEventTargetRef &) = delete;
    OpaqueEventTargetRef &operator=(const OpaqueEventTargetRef &) = delete;

    OpaqueEventTargetRef *const next;  // gets what is left here
    std::vector<std::shared_ptr<OpaqueEventHandlerRef>> handlers;
};
