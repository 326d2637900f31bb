/// \file
/// The I/O registry, as far as network interfaces go.
///
/// The registry holds one entry of the class "IOEthernetInterface" for each Ethernet interface of the machine
/// (/sys/class/net), and above it, in the service plane, its controller:
///
/// | entry | property | value |
/// |---|---|---|
/// | interface | "BSD Name" | string: "eth0" |
/// | interface | "IOPrimaryInterface" | boolean: the default route goes out by it |
/// | controller | "IOMACAddress" | data: the 6 bytes of the hardware address; absent when it is all zeros |
///
///     io_iterator_t found;
///     IOServiceGetMatchingServices(kIOMasterPortDefault, IOServiceMatching("IOEthernetInterface"), &found);
///     while (io_object_t interface = IOIteratorNext(found)) { ... IOObjectRelease(interface); }
///     IOObjectRelease(found);
///
/// Objects are counted references, released with IOObjectRelease; 0 is none. An entry is a picture of the moment it was
/// made. Thread: any.
#pragma once
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef uint32_t mach_port_t;
typedef int kern_return_t;
typedef kern_return_t IOReturn;
typedef mach_port_t io_object_t;
typedef io_object_t io_iterator_t;
typedef io_object_t io_registry_entry_t;
typedef io_object_t io_service_t;
typedef uint32_t IOOptionBits;
typedef char io_name_t[128];

#define MACH_PORT_NULL 0
#define IO_OBJECT_NULL ((io_object_t)0)
#define KERN_SUCCESS 0
#define KERN_FAILURE 5

enum {
    kIOReturnSuccess = 0,
    kIOReturnNoDevice = (int)0xe00002c0,     ///< no such entry
    kIOReturnBadArgument = (int)0xe00002c2,  ///< not an object of the kind that is wanted
};

#define kIOServicePlane "IOService"
#define kIOPropertyMatchKey "IOPropertyMatch"
#define kIOProviderClassKey "IOProviderClass"
#define kIOEthernetInterfaceClass "IOEthernetInterface"
#define kIOPrimaryInterface "IOPrimaryInterface"
#define kIOMACAddress "IOMACAddress"
#define kIOBSDNameKey "BSD Name"

/// The registry's port; there is one.
extern const mach_port_t kIOMasterPortDefault;
kern_return_t IOMasterPort(mach_port_t bootstrapPort, mach_port_t *masterPort);

/// A dictionary that matches every entry of a class: {"IOProviderClass": name}; null for a null name. Properties that an
/// entry must have as well are put under "IOPropertyMatch". Owned.
CFMutableDictionaryRef IOServiceMatching(const char *name);

/// The entries that match, in the order of their names. Consumes a reference to `matching`, whatever the result.
/// kIOReturnBadArgument for a null dictionary or result. No match is a success with an empty iterator.
kern_return_t IOServiceGetMatchingServices(mach_port_t masterPort, CFDictionaryRef matching, io_iterator_t *existing);

/// The next object, owned; 0 at the end.
io_object_t IOIteratorNext(io_iterator_t iterator);
/// Begins anew.
void IOIteratorReset(io_iterator_t iterator);

/// What stands above an entry, owned; kIOReturnNoDevice when nothing does, kIOReturnBadArgument for an unknown plane.
kern_return_t IORegistryEntryGetParentEntry(io_registry_entry_t entry, const io_name_t plane, io_registry_entry_t *parent);

/// A property, owned; null when it is absent.
CFTypeRef IORegistryEntryCreateCFProperty(io_registry_entry_t entry, CFStringRef key, CFAllocatorRef allocator,
                                          IOOptionBits options);

kern_return_t IOObjectRetain(io_object_t object);
/// kIOReturnBadArgument for what is no object, or none any more.
kern_return_t IOObjectRelease(io_object_t object);

#ifdef __cplusplus
}
#endif
