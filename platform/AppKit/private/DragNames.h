/// \file
/// What the protocol of drags calls its messages and data (XDND, www.freedesktop.org/wiki/Specifications/XDND; ICCCM 2.0, chapter 2).
#pragma once
#include <X11/Xlib.h>

#include <string>
#include <vector>

namespace tarvik::drags {

constexpr size_t kMost = 64 << 20;  // bytes of one target that are taken

enum AtomName { kSelection, kEnter, kLeave, kPosition, kDrop, kTypeList, kTargets, kIncrement, kAtoms };

/// The display that AppKit draws on, and its atoms for the names.
class Names {
public:
    explicit Names(Display *display);
    Display *display() const { return display_; }
    Atom operator[](AtomName name) const { return own_[name]; }
    /// In the order of targets().
    const std::vector<Atom> &targets() const { return targets_; }

private:
    Display *display_;
    Atom own_[kAtoms];
    std::vector<Atom> targets_;
};

/// A property of a window: bytes or atoms.
struct Property {
    Atom type = None;
    std::string bytes;
    std::vector<Atom> atoms;
};
Property property(const Names &names, Window window, Atom name, bool remove);

}  // namespace tarvik::drags
