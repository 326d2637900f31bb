/// AEDataModel.h: the data that Apple events carry. A descriptor is a type and bytes.
#pragma once

#include <Carbon/MacErrors.h>
#include <Carbon/MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef ResType DescType;

/// The bytes, reached through the functions below only.
typedef struct OpaqueAEDataStorageType *AEDataStorageType;
typedef AEDataStorageType *AEDataStorage;

struct AEDesc {
    DescType descriptorType;
    AEDataStorage dataHandle; ///< null for a descriptor without data
};
typedef struct AEDesc AEDesc;
typedef AEDesc *AEDescPtr;

enum {
    typeNull        = 0x6E756C6C, ///< 'null'
    typeChar        = 0x54455854, ///< 'TEXT': text in the system's encoding
    typeText        = typeChar,
    typeUnicodeText = 0x75747874, ///< 'utxt': UTF-16 in this processor's order
    typeUTF8Text    = 0x75746638  ///< 'utf8'
};

/// Makes the descriptor an empty one, of type 'null'.
void AEInitializeDesc(AEDesc *desc);
/// Makes a descriptor that holds a copy of the bytes and is disposed of with AEDisposeDesc. A null pointer with size 0 is
/// allowed. paramErr for null otherwise and for a negative size; memFullErr.
OSErr AECreateDesc(DescType typeCode, const void *dataPtr, Size dataSize, AEDesc *result);
/// Frees the data; the descriptor is of type 'null' then. Null and 'null' ones are left alone.
OSErr AEDisposeDesc(AEDesc *desc);
/// A copy with bytes of its own.
OSErr AEDuplicateDesc(const AEDesc *desc, AEDesc *result);
/// The number of bytes; 0 for null.
Size AEGetDescDataSize(const AEDesc *desc);
/// Copies as many bytes as there are and fit.
OSErr AEGetDescData(const AEDesc *desc, void *dataPtr, Size maximumSize);

#ifdef __cplusplus
}
#endif
