#include "platform/Files/private/Lookup.h"

#include <fcntl.h>

namespace tarvik::files {

OSErr locateFolder(const FSRef *ref, std::string &path, struct statx *found)
{
    struct statx item;
    const OSErr error = locate(ref, path, &item);
    if (error == noErr && found)
        *found = item;
    return error == noErr && !S_ISDIR(item.stx_mode) ? OSErr(errFSNotAFolder) : error;
}

std::string existingName(const std::string &folder, const std::string &name)
{
    struct statx item;
    if (status(AT_FDCWD, joined(folder, name).c_str(), item) != 0)
        for (const std::string &form : otherForms(name))
            if (status(AT_FDCWD, joined(folder, form).c_str(), item) == 0)
                return form;
    return name;
}

}  // namespace tarvik::files
