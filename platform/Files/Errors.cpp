#include "platform/Files/private/Errors.h"

#include <Carbon/MacErrors.h>

#include <cerrno>

OSErr tarvik::files::fileError(int systemError)
{
    switch (systemError) {
    case 0: return noErr;
    case ENOENT: return fnfErr;
    case ENOTDIR: return dirNFErr;
    case EACCES: return afpAccessDenied;
    case EPERM: return permErr;
    case EEXIST: return dupFNErr;
    case ENOTEMPTY:
    case EBUSY:
    case ETXTBSY: return fBsyErr;
    case ENAMETOOLONG: return errFSNameTooLong;
    case EILSEQ:
    case ELOOP: return bdNamErr;
    case ENOSPC:
    case EDQUOT: return dskFulErr;
    case EROFS: return wPrErr;
    case EMFILE:
    case ENFILE: return tmfoErr;
    case ENOMEM: return memFullErr;
    case EXDEV: return diffVolErr;
    case EISDIR: return notAFileErr;
    case EINVAL:
    case EFAULT: return paramErr;
    default: return ioErr;
    }
}
