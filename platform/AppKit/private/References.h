// What the toolbox keeps of an AppKit object, and hands out as an opaque reference: made when it is first asked for, and
// forgotten when the object is deallocated. Main thread.
#pragma once
#import <Foundation/NSObject.h>

#include "platform/Foundation/private/ReplacedMethod.h"

#include <memory>
#include <unordered_map>

template <class Record>
class References {
public:
    /// `Record::base()` is the class of the objects; a Record is made of one of them.
    static References &shared()
    {
        static References &references =
            *new References;  // for good: objects are deallocated until the process ends
        return references;
    }
    /// Null for nil.
    Record *of(id object)
    {
        if (!object)
            return nullptr;
        std::unique_ptr<Record> &record = records_[object];
        if (!record) {
            record.reset(new Record(object));
            objects_[record.get()] = object;
        }
        return record.get();
    }
    /// Null for an object that nobody has asked of.
    Record *existing(id object) const
    {
        const auto found = records_.find(object);
        return found == records_.end() ? nullptr : found->second.get();
    }
    /// The record when the reference is known, otherwise null.
    Record *known(const Record *reference) const
    {
        return objects_.count(reference) ? const_cast<Record *>(reference) : nullptr;
    }
    void forget(id object)
    {
        const auto found = records_.find(object);
        if (found == records_.end())
            return;
        objects_.erase(found->second.get());
        const std::unique_ptr<Record> record =
            std::move(found->second);  // outlives the entries: its end may come back here
        records_.erase(found);
    }

private:
    // AppKit does not tell when an object goes, so its dealloc does.
    References()
    {
        Method dealloc = class_getInstanceMethod(Record::base(), @selector(dealloc));
        original_ = tarvik::replacedMethod(dealloc, &forgetAndDealloc);
    }
    static void forgetAndDealloc(id self, SEL command)
    {
        shared().forget(self);
        shared().original_(self, command);
    }

    std::unordered_map<id, std::unique_ptr<Record>> records_;
    std::unordered_map<const Record *, id> objects_;
    void (*original_)(id, SEL) = nullptr;
};
