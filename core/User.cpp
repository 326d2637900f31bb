#include <Tarvik/core/User.h>
#include <grp.h>
#include <unistd.h>

#include <cstring>

Boolean UserIsRoot() { return geteuid() == 0; }

Boolean UserIsBelongToGroup(const char *groupName)
{
    if (!groupName)
        return false;
    const char *login = getlogin();
    if (!login)
        return false;
    const group *found = getgrnam(groupName);
    if (!found)
        return false;
    for (char **member = found->gr_mem; *member; ++member) {
        if (std::strcmp(*member, login) == 0)
            return true;
    }
    return false;
}
