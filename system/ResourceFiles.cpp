#include "ResourceFiles.h"

namespace {

constexpr ResFileRefNum kNoFile = -1;

/// The application's own resource file, to go back to. Nothing sets it: it stays at none.
ResFileRefNum gAppResRef = kNoFile;

}  // namespace

ResFileRefNum RFOpen(const FSRef *ref, Boolean create)
{
    if (!ref)
        return kNoFile;
    if (gAppResRef != kNoFile)
        gAppResRef = CurResFile();
    if (create) {
        HFSUniStr255 name;
        FSGetResourceForkName(&name);
        FSCreateResourceFork(ref, name.length, name.unicode, 0);
    }
    const ResFileRefNum refNum = FSOpenResFile(ref, create ? fsRdWrPerm : fsRdPerm);
    if (refNum != kNoFile)
        UseResFile(refNum);
    return refNum;
}

void RFClose(ResFileRefNum *refNum)
{
    if (!refNum || *refNum == kNoFile)
        return;
    if (gAppResRef != kNoFile)
        UseResFile(gAppResRef);
    CloseResFile(*refNum);
    *refNum = kNoFile;
}
