#include "platform/AppKit/private/DragNames.h"

#include "platform/AppKit/private/DragData.h"

#include <Tarvik/support/Owned.h>

#include <algorithm>

namespace tarvik::drags {

static constexpr const char *kNames[kAtoms] = {"XdndSelection", "XdndEnter",    "XdndLeave", "XdndPosition",
                                               "XdndDrop",      "XdndTypeList", "TARGETS",   "INCR"};

Names::Names(Display *display) : display_(display), targets_(drags::targets().size())
{
    std::vector<char *> names;
    for (const char *name : kNames)
        names.push_back(const_cast<char *>(name));
    for (const Target &target : drags::targets())
        names.push_back(const_cast<char *>(target.name));
    std::vector<Atom> found(names.size());
    XInternAtoms(display, names.data(), int(names.size()), False, found.data());
    std::copy_n(found.begin(), kAtoms, own_);
    std::copy(found.begin() + kAtoms, found.end(), targets_.begin());
}

Property property(const Names &names, Window window, Atom name, bool remove)
{
    Property found;
    int format = 0;
    unsigned long count = 0, left = 0;
    unsigned char *items = nullptr;
    if (XGetWindowProperty(names.display(), window, name, 0, kMost / 4, remove, AnyPropertyType, &found.type,
                           &format, &count, &left, &items) != Success)
        return found;
    const Owned<unsigned char, XFree> owned(items);
    if (format == 8)
        found.bytes.assign(reinterpret_cast<char *>(items), count);
    else if (format == 32)
        found.atoms.assign(reinterpret_cast<Atom *>(items), reinterpret_cast<Atom *>(items) + count);
    return found;
}

}  // namespace tarvik::drags
