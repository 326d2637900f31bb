// A mount namespace of the test process's own: its files can be put in the places where the system looks for them.
#pragma once
#include <string>

/// Leaves the system's mount namespace (through a user namespace when not root). False where the kernel refuses.
/// The process must have one thread only when it does not run as root.
bool enterPrivateMounts();
/// Shows `source` (a file or folder) at `target`, which must exist. False on failure.
bool bindMount(const std::string &source, const std::string &target);
/// Puts a /dev of our own in place, with the usual devices, in which files can be made. False on failure.
bool mountPrivateDev();
