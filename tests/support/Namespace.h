// What the test process may see and do: a mount namespace of its own, in which files can be put in the places where the system
// looks for them, and the rights of a user who is not root.
#pragma once
#include <string>

/// Leaves the system's mount namespace (through a user namespace when not root). False where the kernel refuses.
/// The process must have one thread only when it does not run as root.
bool enterPrivateMounts();
/// Shows `source` (a file or folder) at `target`, which must exist. False on failure.
bool bindMount(const std::string &source, const std::string &target);
/// Puts a /dev of our own in place, with the usual devices, in which files can be made. False on failure.
bool mountPrivateDev();
/// Gives up root's access to every file: from now on permissions count, for root as for everybody else. False on failure.
bool giveUpRootsAccess();
