#include <IOKit/IOKitLib.h>

#include "NetworkInterfaces.h"

#import <Foundation/Foundation.h>
#include <Tarvik/support/Pool.h>
#include <Tarvik/support/Retained.h>

#include <cstring>
#include <map>
#include <memory>
#include <mutex>

const mach_port_t kIOMasterPortDefault = 0;

namespace {

/// An entry of the registry, or a walk over entries.
struct Object {
    virtual ~Object() = default;
};

struct Entry : Object {
    tarvik::Retained<NSDictionary *> properties;
    std::shared_ptr<Entry> parent;
};

struct Iterator : Object {
    std::vector<std::shared_ptr<Entry>> entries;
    size_t next = 0;
};

/// Objects by handle. A handle is never used twice.
class Table {
public:
    io_object_t add(std::shared_ptr<Object> object)
    {
        std::lock_guard lock(lock_);
        objects_[++last_] = {std::move(object), 1};
        return last_;
    }

    template <class Kind>
    std::shared_ptr<Kind> find(io_object_t handle)
    {
        std::lock_guard lock(lock_);
        const auto found = objects_.find(handle);
        return found == objects_.end() ? nullptr : std::dynamic_pointer_cast<Kind>(found->second.first);
    }

    bool count(io_object_t handle, int change)
    {
        std::lock_guard lock(lock_);
        const auto found = objects_.find(handle);
        if (found == objects_.end())
            return false;
        if ((found->second.second += change) == 0)
            objects_.erase(found);
        return true;
    }

private:
    std::mutex lock_;
    std::map<io_object_t, std::pair<std::shared_ptr<Object>, int>> objects_;
    io_object_t last_ = 0;
};

Table &table()
{
    static Table shared;
    return shared;
}

std::shared_ptr<Entry> entryFor(const network::Interface &interface)
{
    auto controller = std::make_shared<Entry>();
    const bool hasAddress = interface.address != decltype(interface.address){};
    NSData *address = [NSData dataWithBytes:interface.address.data() length:interface.address.size()];
    NSDictionary *above =
        hasAddress ? [NSDictionary dictionaryWithObject:address forKey:@kIOMACAddress] : nil;
    controller->properties = tarvik::retain(above);
    auto entry = std::make_shared<Entry>();
    entry->parent = controller;
    NSDictionary *own = [NSDictionary
        dictionaryWithObjectsAndKeys:[NSString stringWithUTF8String:interface.name.c_str()], @kIOBSDNameKey,
                                     [NSNumber numberWithBool:interface.isPrimary], @kIOPrimaryInterface,
                                     nil];
    entry->properties = tarvik::retain(own);
    return entry;
}

BOOL hasProperties(Entry &entry, NSDictionary *wanted)
{
    NSEnumerator *keys = [wanted keyEnumerator];
    while (id key = [keys nextObject]) {
        if (![[wanted objectForKey:key] isEqual:[entry.properties.get() objectForKey:key]])
            return NO;
    }
    return YES;
}

}  // namespace

kern_return_t IOMasterPort(mach_port_t, mach_port_t *masterPort)
{
    if (!masterPort)
        return kIOReturnBadArgument;
    *masterPort = kIOMasterPortDefault;
    return kIOReturnSuccess;
}

CFMutableDictionaryRef IOServiceMatching(const char *name)
{
    tarvik::Pool pool;
    NSString *className = name ? [NSString stringWithUTF8String:name] : nil;
    if (!className)
        return nullptr;
    return (CFMutableDictionaryRef)
        [[NSMutableDictionary alloc] initWithObjectsAndKeys:className, @kIOProviderClassKey, nil];
}

kern_return_t IOServiceGetMatchingServices(mach_port_t, CFDictionaryRef matching, io_iterator_t *existing)
{
    tarvik::Pool pool;
    const auto wanted = tarvik::adopt((NSDictionary *)matching);
    if (!matching || !existing)
        return kIOReturnBadArgument;
    auto iterator = std::make_shared<Iterator>();
    if ([[wanted.get() objectForKey:@kIOProviderClassKey] isEqual:@kIOEthernetInterfaceClass]) {
        for (const network::Interface &interface : network::ethernetInterfaces()) {
            auto entry = entryFor(interface);
            if (hasProperties(*entry, [wanted.get() objectForKey:@kIOPropertyMatchKey]))
                iterator->entries.push_back(entry);
        }
    }
    *existing = table().add(iterator);
    return kIOReturnSuccess;
}

io_object_t IOIteratorNext(io_iterator_t handle)
{
    const auto iterator = table().find<Iterator>(handle);
    if (!iterator || iterator->next == iterator->entries.size())
        return IO_OBJECT_NULL;
    return table().add(iterator->entries[iterator->next++]);
}

void IOIteratorReset(io_iterator_t handle)
{
    if (const auto iterator = table().find<Iterator>(handle))
        iterator->next = 0;
}

kern_return_t IORegistryEntryGetParentEntry(io_registry_entry_t handle, const io_name_t plane,
                                            io_registry_entry_t *parent)
{
    const auto entry = table().find<Entry>(handle);
    if (!entry || !parent || !plane || strcmp(plane, kIOServicePlane) != 0)
        return kIOReturnBadArgument;
    if (!entry->parent)
        return kIOReturnNoDevice;
    *parent = table().add(entry->parent);
    return kIOReturnSuccess;
}

CFTypeRef IORegistryEntryCreateCFProperty(io_registry_entry_t handle, CFStringRef key, CFAllocatorRef,
                                          IOOptionBits)
{
    const auto entry = table().find<Entry>(handle);
    return entry && key ? (CFTypeRef)[[entry->properties.get() objectForKey:(NSString *)key] retain]
                        : nullptr;
}

kern_return_t IOObjectRetain(io_object_t object)
{
    return table().count(object, 1) ? kIOReturnSuccess : kIOReturnBadArgument;
}

kern_return_t IOObjectRelease(io_object_t object)
{
    return table().count(object, -1) ? kIOReturnSuccess : kIOReturnBadArgument;
}
