/// MacErrors.h: the error codes that several managers share. A manager's own codes stand in its own header.
#pragma once

enum {
    // general
    unimpErr        = -4,
    paramErr        = -50,
    userCanceledErr = -128,

    // memory
    memFullErr   = -108,
    nilHandleErr = -109,
    memWZErr     = -111,

    // files
    dirFulErr    = -33,
    dskFulErr    = -34,
    nsvErr       = -35, ///< no such volume
    ioErr        = -36,
    bdNamErr     = -37,
    fnOpnErr     = -38, ///< file not open
    eofErr       = -39,
    posErr       = -40, ///< before the start of the file
    tmfoErr      = -42, ///< too many files open
    fnfErr       = -43, ///< file not found
    wPrErr       = -44,
    fLckdErr     = -45,
    vLckdErr     = -46,
    fBsyErr      = -47, ///< busy; a folder: not empty
    dupFNErr     = -48,
    opWrErr      = -49,
    rfNumErr     = -51,
    gfpErr       = -52,
    volOffLinErr = -53,
    permErr      = -54,
    wrPermErr    = -61,
    dirNFErr     = -120,
    badMovErr    = -122,
    wrgVolTypErr = -123,
    afpAccessDenied = -5000,

    // identifiers and references
    fidNotFound           = -1300,
    fidExists             = -1301,
    notAFileErr           = -1302,
    diffVolErr            = -1303,
    pathTooLongErr        = -2110,
    errFSBadFSRef         = -1401,
    errFSBadForkName      = -1402,
    errFSBadBuffer        = -1403,
    errFSBadForkRef       = -1404,
    errFSBadInfoBitmap    = -1405,
    errFSMissingCatInfo   = -1406,
    errFSNotAFolder       = -1407,
    errFSForkNotFound     = -1409,
    errFSNameTooLong      = -1410,
    errFSMissingName      = -1411,
    errFSBadPosMode       = -1412,
    errFSBadAllocFlags    = -1413,
    errFSNoMoreItems      = -1417,
    errFSBadItemCount     = -1418,
    errFSRefsDifferent    = -1420,
    errFSForkExists       = -1421,
    errFSBadIteratorFlags = -1422,
    errFSIteratorNotFound = -1423,

    // resources
    resNotFound  = -192,
    resFNotFound = -193,
    addResFailed = -194,
    rmvResFailed = -196,
    resAttrErr   = -198,
    mapReadErr   = -199,

    // processes
    procNotFound       = -600,
    appModeErr         = -602,
    appIsDaemon        = -606, ///< has no windows
    connectionInvalid  = -609,
    noUserInteractionAllowed = -610
};
