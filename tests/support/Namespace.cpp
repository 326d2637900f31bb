#include "Namespace.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <linux/capability.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <unistd.h>

bool enterPrivateMounts()
{
    const uid_t user = geteuid();
    const gid_t group = getegid();
    if (unshare(user == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER) != 0)
        return false;
    if (user != 0) {
        std::ofstream("/proc/self/setgroups") << "deny";
        std::ofstream("/proc/self/uid_map") << user << ' ' << user << " 1";
        std::ofstream("/proc/self/gid_map") << group << ' ' << group << " 1";
    }
    return mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

bool bindMount(const std::string &source, const std::string &target)
{
    return mount(source.c_str(), target.c_str(), nullptr, MS_BIND, nullptr) == 0;
}

bool mountPrivateDev()
{
    namespace fs = std::filesystem;
    const fs::path fresh = fs::temp_directory_path() / "private-dev";
    fs::create_directory(fresh);
    if (mount("tmpfs", fresh.c_str(), "tmpfs", MS_NOSUID, "mode=0755") != 0)
        return false;
    for (const char *name : {"null", "zero", "full", "random", "urandom", "tty"}) {
        std::ofstream(fresh / name).close();
        if (!bindMount(std::string("/dev/") + name, fresh / name))
            return false;
    }
    return mount(fresh.c_str(), "/dev", nullptr, MS_MOVE, nullptr) == 0;
}

bool giveUpRootsAccess()
{
    __user_cap_header_struct head = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2] = {};
    if (syscall(SYS_capget, &head, data) != 0)
        return false;
    data[0].effective &= ~(1u << CAP_DAC_READ_SEARCH | 1u << CAP_DAC_OVERRIDE);
    return syscall(SYS_capset, &head, data) == 0;
}
