/// Scrap.h: the clipboard of the older toolbox, which is the desktop's: what other applications copy is there, and they find what is
/// put here.
///
///     ScrapRef scrap;
///     ClearCurrentScrap();
///     if (GetCurrentScrap(&scrap) == noErr)
///         PutScrapFlavor(scrap, kScrapFlavorTypeText, kScrapFlavorMaskNone, 5, "hello");
///
/// Flavors: 'TEXT' is text in the system's encoding, 'utxt' text in UTF-16 of this processor's order, 'TIFF', 'PDF ' and 'RTF ' are data
/// of these formats; any other one is passed among applications of this toolkit. Thread: main.
#pragma once
#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

typedef struct OpaqueScrapRef *ScrapRef;
typedef FourCharCode           ScrapFlavorType;
typedef UInt32                 ScrapFlavorFlags;

enum {
    kScrapFlavorTypeText    = 0x54455854, ///< 'TEXT'
    kScrapFlavorTypeUnicode = 0x75747874, ///< 'utxt'
    kScrapFlavorTypeTIFF    = 0x54494646, ///< 'TIFF'
    kScrapFlavorTypePDF     = 0x50444620, ///< 'PDF '
    kScrapFlavorTypeRTF     = 0x52544620  ///< 'RTF '
};
enum { kScrapFlavorMaskNone = 0 };

enum {
    scrapFlavorNotFoundErr    = -102,
    internalScrapErr          = -4988, ///< the clipboard can't be reached: no display
    badScrapRefErr            = -4990,
    nilScrapFlavorDataErr     = -4994,
    illegalScrapFlavorSizeErr = -4999
};

OSStatus GetCurrentScrap(ScrapRef *outScrap);
OSStatus ClearCurrentScrap(void);

OSStatus GetScrapFlavorSize(ScrapRef scrap, ScrapFlavorType flavor, Size *outSize);
/// Copies what fits in *byteCount bytes; *byteCount is then what there is.
OSStatus GetScrapFlavorData(ScrapRef scrap, ScrapFlavorType flavor, Size *byteCount, void *buffer);
/// Adds a flavor to what has been put since ClearCurrentScrap, or replaces it.
OSStatus PutScrapFlavor(ScrapRef scrap, ScrapFlavorType flavor, ScrapFlavorFlags flags, Size size, const void *data);

CF_EXTERN_C_END
