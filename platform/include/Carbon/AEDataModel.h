/// AEDataModel.h: the data that Apple events carry.
///
/// A descriptor is a type and bytes. A list holds descriptors, a record holds them under keywords, and an Apple event is a record
/// (its parameters) with attributes: class, identifier, target, return identifier.
///
///     AppleEvent event;
///     AECreateAppleEvent('book', 'borw', &target, kAutoGenerateReturnID, kAnyTransactionID, &event);
///     AEPutParamPtr(&event, keyDirectObject, typeUTF8Text, "Emma", 4);
///     AEGetParamPtr(&event, keyDirectObject, typeUnicodeText, NULL, units, sizeof units, &size);   // coerced on the way
///     AEDisposeDesc(&event);
///
///   ownership   a descriptor that a function fills is the caller's, who disposes of it with AEDisposeDesc; what is put somewhere
///               is copied. A result is set to the null descriptor before any work, and stays so on failure
///   errors      paramErr for a null argument that is needed; errAEDescNotFound: no such item, parameter or attribute;
///               errAEWrongDataType: the descriptor is no list, no record, no event; errAECoercionFail; memFullErr
///   threads     any; one descriptor is changed by one thread at a time
///
/// A descriptor's type may be written over by its owner (a record becomes an object specifier so); its kind stays what it was.
#pragma once

#include <Carbon/MacErrors.h>
#include <Carbon/MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef ResType DescType;
typedef FourCharCode AEKeyword;

/// The bytes, reached through the functions below only.
typedef struct OpaqueAEDataStorageType *AEDataStorageType;
typedef AEDataStorageType *AEDataStorage;

struct AEDesc {
    DescType descriptorType;
    AEDataStorage dataHandle; ///< null for a descriptor without data
};
typedef struct AEDesc AEDesc;
typedef AEDesc *AEDescPtr;

typedef AEDesc     AEAddressDesc; ///< whom an event is for
typedef AEDesc     AEDescList;
typedef AEDescList AERecord;
typedef AERecord   AppleEvent;
typedef AEDescList *AEDescListPtr;
typedef AERecord   *AERecordPtr;
typedef AppleEvent *AppleEventPtr;

typedef FourCharCode AEEventClass;
typedef FourCharCode AEEventID;
typedef SInt16       AEReturnID;
typedef SInt32       AETransactionID;
typedef SInt8        AEArrayType;

/// An item of a record.
struct AEKeyDesc {
    AEKeyword descKey;
    AEDesc descContent;
};
typedef struct AEKeyDesc AEKeyDesc;

enum {
    typeNull        = 0x6E756C6C, ///< 'null'
    typeWildCard    = 0x2A2A2A2A, ///< '****': any type
    typeChar        = 0x54455854, ///< 'TEXT': text in the system's encoding
    typeText        = typeChar,
    typeUnicodeText = 0x75747874, ///< 'utxt': UTF-16 in this processor's order
    typeUTF8Text    = 0x75746638, ///< 'utf8'
    typeUTF16ExternalRepresentation = 0x75743136, ///< 'ut16': UTF-16, big-endian or with a byte order mark
    typeIntlText    = 0x69747874, ///< 'itxt': script and language (16 bits each), then text
    typeCString     = 0x63737472, ///< 'cstr': text and a zero byte
    typePString     = 0x70737472, ///< 'pstr': a length byte and text

    typeBoolean = 0x626F6F6C, ///< 'bool': one byte
    typeTrue    = 0x74727565, ///< 'true': no data
    typeFalse   = 0x66616C73, ///< 'fals': no data

    // Numbers, in this processor's order.
    typeSInt16 = 0x73686F72, ///< 'shor'
    typeUInt16 = 0x75736872, ///< 'ushr'
    typeSInt32 = 0x6C6F6E67, ///< 'long'
    typeUInt32 = 0x6D61676E, ///< 'magn'
    typeSInt64 = 0x636F6D70, ///< 'comp'
    typeUInt64 = 0x75636F6D, ///< 'ucom'
    typeIEEE32BitFloatingPoint = 0x73696E67, ///< 'sing'
    typeIEEE64BitFloatingPoint = 0x646F7562, ///< 'doub'
    typeShortInteger = typeSInt16,
    typeLongInteger  = typeSInt32,
    typeInteger      = typeSInt32,
    typeMagnitude    = typeUInt32,
    typeComp         = typeSInt64,
    typeShortFloat   = typeIEEE32BitFloatingPoint,
    typeFloat        = typeIEEE64BitFloatingPoint,
    typeLongFloat    = typeIEEE64BitFloatingPoint,
    typeLongDateTime = 0x6C647420, ///< 'ldt ': SInt64, seconds since the start of 1904, local time

    // Four-character codes.
    typeType       = 0x74797065, ///< 'type'
    typeEnumerated = 0x656E756D, ///< 'enum'
    typeEnumeration = typeEnumerated,
    typeKeyword    = 0x6B657977, ///< 'keyw'
    typeProperty   = 0x70726F70, ///< 'prop'
    typeApplSignature = 0x7369676E, ///< 'sign': an application, by its creator code

    typeAEList     = 0x6C697374, ///< 'list'
    typeAERecord   = 0x7265636F, ///< 'reco'
    typeAppleEvent = 0x61657674, ///< 'aevt'
    typeEventRecord = 0x65767263, ///< 'evrc'
    typeObjectSpecifier = 0x6F626A20, ///< 'obj ': a record

    // Files.
    typeAlias   = 0x616C6973, ///< 'alis': an alias record
    typeFSRef   = 0x66737266, ///< 'fsrf'
    typeFileURL = 0x6675726C, ///< 'furl': a file URL as UTF-8 text

    // Processes.
    typeProcessSerialNumber = 0x70736E20, ///< 'psn '
    typeKernelProcessID     = 0x6B706964, ///< 'kpid': SInt32
    typeApplicationBundleID = 0x62756E64, ///< 'bund': a bundle identifier as UTF-8 text
    typeApplicationURL      = 0x6170726C  ///< 'aprl': an application's file URL
};

enum {
    keyDirectObject = 0x2D2D2D2D, ///< '----': what an event is about; also the keyword of its result
    keyErrorNumber  = 0x6572726E, ///< 'errn': SInt32, in a reply
    keyErrorString  = 0x65727273, ///< 'errs'
    keyProcessSerialNumber = 0x70736E20
};

/// Attributes of an event.
enum {
    keyTransactionIDAttr   = 0x7472616E, ///< 'tran': SInt32
    keyReturnIDAttr        = 0x72746964, ///< 'rtid': SInt32
    keyEventClassAttr      = 0x6576636C, ///< 'evcl': type
    keyEventIDAttr         = 0x65766964, ///< 'evid': type
    keyAddressAttr         = 0x61646472, ///< 'addr': the target; in a received event, who sent it
    keyOptionalKeywordAttr = 0x6F70746B, ///< 'optk': list of the parameters that need not be understood
    keyTimeoutAttr         = 0x74696D6F, ///< 'timo': SInt32, ticks
    keyInteractLevelAttr   = 0x696E7465, ///< 'inte'
    keyEventSourceAttr     = 0x65737263, ///< 'esrc': SInt16, kAEDirectCall ...; read only
    keyMissedKeywordAttr   = 0x6D697373, ///< 'miss': the first parameter that no handler asked for; read only
    keyOriginalAddressAttr = 0x66726F6D, ///< 'from': who sent it; read only
    keyReplyRequestedAttr  = 0x72657071, ///< 'repq': boolean; read only
    keySenderEUIDAttr      = 0x73656964, ///< 'seid': SInt32; read only
    keySenderEGIDAttr      = 0x73676964, ///< 'sgid'; read only
    keySenderUIDAttr       = 0x75736964, ///< 'usid'; read only
    keySenderGIDAttr       = 0x67736964, ///< 'gsid'; read only
    keySenderPIDAttr       = 0x73706964  ///< 'spid'; read only
};

enum {
    kAutoGenerateReturnID = -1, ///< a number of its own for every event
    kAnyTransactionID     = 0
};

enum {
    kAEDataArray      = 0, ///< items at a distance of 16 bits or more, of one size
    kAEPackedArray    = 1, ///< items of one size, one behind the other
    kAEDescArray      = 3, ///< AEDesc
    kAEKeyDescArray   = 4, ///< AEKeyDesc
    kAEHandleArray    = 2  ///< Handle
};

union AEArrayData {
    SInt16    kAEDataArray[1];
    SInt8     kAEPackedArray[1];
    Handle    kAEHandleArray[1];
    AEDesc    kAEDescArray[1];
    AEKeyDesc kAEKeyDescArray[1];
};
typedef union AEArrayData AEArrayData;
typedef AEArrayData *AEArrayDataPointer;

// Descriptors.

/// Makes the descriptor an empty one, of type 'null'.
void AEInitializeDesc(AEDesc *desc);
/// Makes a descriptor that holds a copy of the bytes and is disposed of with AEDisposeDesc. A null pointer with size 0 is
/// allowed. The bytes of a list, a record or an event are its flattened form; none make an empty list or record.
/// paramErr for null otherwise, for a negative size and for bytes that are no such form; memFullErr.
OSErr AECreateDesc(DescType typeCode, const void *dataPtr, Size dataSize, AEDesc *result);
/// Frees the data; the descriptor is of type 'null' then. Null and 'null' ones are left alone.
OSErr AEDisposeDesc(AEDesc *desc);
/// A copy with bytes of its own.
OSErr AEDuplicateDesc(const AEDesc *desc, AEDesc *result);
/// Type and bytes in the place of what it held; the rest is AECreateDesc's.
OSErr AEReplaceDescData(DescType typeCode, const void *dataPtr, Size dataSize, AEDesc *desc);
/// The number of bytes; 0 for null. Of a list, a record or an event it is the length of the flattened form.
Size AEGetDescDataSize(const AEDesc *desc);
/// Copies as many bytes as there are and fit.
OSErr AEGetDescData(const AEDesc *desc, void *dataPtr, Size maximumSize);
/// Copies a stretch of the bytes, which must lie within them (errAECorruptData otherwise).
OSStatus AEGetDescDataRange(const AEDesc *desc, void *buffer, Size offset, Size length);

// Lists and records. Items are counted from 1; the functions for lists read records and events, too.

/// An empty list, or record. What all items start with may be named for the platform's sake; it changes nothing.
OSErr AECreateList(const void *factoringPtr, Size factoredSize, Boolean isRecord, AEDescList *resultList);
/// Whether it is a record (whatever its type is called) or an event.
Boolean AECheckIsRecord(const AEDesc *desc);
OSErr AECountItems(const AEDescList *list, long *count);
/// Index 0 and count + 1 add at the end, 1 to count replace. errAEIllegalIndex beyond; errAEWrongDataType for a record.
OSErr AEPutPtr(AEDescList *list, long index, DescType typeCode, const void *dataPtr, Size dataSize);
OSErr AEPutDesc(AEDescList *list, long index, const AEDesc *desc);
/// The item coerced to the type; its keyword is typeWildCard in a list. The actual size is told whole, the bytes as far as they fit.
OSErr AEGetNthPtr(const AEDescList *list, long index, DescType desiredType, AEKeyword *keyword, DescType *typeCode, void *dataPtr,
                  Size maximumSize, Size *actualSize);
OSErr AEGetNthDesc(const AEDescList *list, long index, DescType desiredType, AEKeyword *keyword, AEDesc *result);
OSErr AESizeOfNthItem(const AEDescList *list, long index, DescType *typeCode, Size *dataSize);
OSErr AEDeleteItem(AEDescList *list, long index);
/// Puts so many items at the end; a kAEKeyDescArray is for records. The type is that of the items of an array of bytes.
OSErr AEPutArray(AEDescList *list, AEArrayType arrayType, const AEArrayData *array, DescType itemType, Size itemSize, long itemCount);
/// Hands out all items: bytes of one type and size (errAEWrongDataType otherwise), handles or descriptors, the caller's to dispose of.
/// errAEBufferTooSmall when they don't fit into maximumSize bytes.
OSErr AEGetArray(const AEDescList *list, AEArrayType arrayType, AEArrayDataPointer array, Size maximumSize, DescType *itemType, Size *itemSize,
                 long *itemCount);

// Parameters of events, fields of records.

OSErr AEPutParamPtr(AppleEvent *event, AEKeyword keyword, DescType typeCode, const void *dataPtr, Size dataSize);
OSErr AEPutParamDesc(AppleEvent *event, AEKeyword keyword, const AEDesc *desc);
OSErr AEGetParamPtr(const AppleEvent *event, AEKeyword keyword, DescType desiredType, DescType *actualType, void *dataPtr, Size maximumSize,
                    Size *actualSize);
OSErr AEGetParamDesc(const AppleEvent *event, AEKeyword keyword, DescType desiredType, AEDesc *result);
OSErr AESizeOfParam(const AppleEvent *event, AEKeyword keyword, DescType *typeCode, Size *dataSize);
OSErr AEDeleteParam(AppleEvent *event, AEKeyword keyword);
#define AEPutKeyPtr(record, keyword, typeCode, dataPtr, dataSize) AEPutParamPtr((record), (keyword), (typeCode), (dataPtr), (dataSize))
#define AEPutKeyDesc(record, keyword, desc) AEPutParamDesc((record), (keyword), (desc))
#define AEGetKeyPtr(record, keyword, desiredType, typeCode, dataPtr, maxSize, actualSize) \
    AEGetParamPtr((record), (keyword), (desiredType), (typeCode), (dataPtr), (maxSize), (actualSize))
#define AEGetKeyDesc(record, keyword, desiredType, result) AEGetParamDesc((record), (keyword), (desiredType), (result))
#define AESizeOfKeyDesc(record, keyword, typeCode, dataSize) AESizeOfParam((record), (keyword), (typeCode), (dataSize))
#define AEDeleteKeyDesc(record, keyword) AEDeleteParam((record), (keyword))

// Events.

/// An event for a target (null: set later), without parameters.
OSErr AECreateAppleEvent(AEEventClass eventClass, AEEventID eventID, const AEAddressDesc *target, AEReturnID returnID,
                         AETransactionID transactionID, AppleEvent *result);
OSErr AEPutAttributePtr(AppleEvent *event, AEKeyword keyword, DescType typeCode, const void *dataPtr, Size dataSize);
OSErr AEPutAttributeDesc(AppleEvent *event, AEKeyword keyword, const AEDesc *desc);
OSErr AEGetAttributePtr(const AppleEvent *event, AEKeyword keyword, DescType desiredType, DescType *typeCode, void *dataPtr, Size maximumSize,
                        Size *actualSize);
OSErr AEGetAttributeDesc(const AppleEvent *event, AEKeyword keyword, DescType desiredType, AEDesc *result);
OSErr AESizeOfAttribute(const AppleEvent *event, AEKeyword keyword, DescType *typeCode, Size *dataSize);

// Coercion.
//
//   text           the text types into each other; 'TEXT' is UTF-8, or MacRoman where its bytes are not
//   numbers        into each other where the value lies in the range, rounded to the nearest (even at a half); 'bool' is 0 or 1,
//                  and what is not 0 is true; to text and from text that is a number ("3.5") or "true", "false"
//   codes          type, enumeration, keyword, property and signature into each other, and to and from text of four characters
//   files          alias, reference and file URL into each other; to and from text as a path with colons
//   processes      process number and process identifier into each other
//   lists          anything into a list of one, a list of one into what its item can be; a record into a list of its values; an event
//                  into the record of its parameters; a record into one of another name
//
// Handlers that an application installs come first.

/// The data as the type; typeWildCard and its own type make a copy.
OSErr AECoerceDesc(const AEDesc *desc, DescType toType, AEDesc *result);
OSErr AECoercePtr(DescType typeCode, const void *dataPtr, Size dataSize, DescType toType, AEDesc *result);

typedef OSErr (*AECoerceDescProcPtr)(const AEDesc *fromDesc, DescType toType, SRefCon refcon, AEDesc *toDesc);
typedef OSErr (*AECoercePtrProcPtr)(DescType typeCode, const void *dataPtr, Size dataSize, DescType toType, SRefCon refcon, AEDesc *result);
typedef AECoerceDescProcPtr AECoerceDescUPP;
typedef AECoercePtrProcPtr  AECoercePtrUPP;
typedef AECoercePtrUPP      AECoercionHandlerUPP; ///< either of the two
static inline AECoerceDescUPP NewAECoerceDescUPP(AECoerceDescProcPtr function) { return function; }
static inline AECoercePtrUPP  NewAECoercePtrUPP(AECoercePtrProcPtr function) { return function; }
static inline void DisposeAECoerceDescUPP(AECoerceDescUPP function) { (void)function; }
static inline void DisposeAECoercePtrUPP(AECoercePtrUPP function) { (void)function; }

/// Installs a handler for two types, each of which may be typeWildCard, in the place of an earlier one. fromTypeIsDesc says which
/// form it has. errAECoercionFail of a handler leaves the coercion to what comes behind it. The two tables are this process's.
OSErr AEInstallCoercionHandler(DescType fromType, DescType toType, AECoercionHandlerUPP handler, SRefCon handlerRefcon, Boolean fromTypeIsDesc,
                               Boolean isSysHandler);
/// errAEHandlerNotFound without one; a null handler removes whichever is there.
OSErr AERemoveCoercionHandler(DescType fromType, DescType toType, AECoercionHandlerUPP handler, Boolean isSysHandler);
OSErr AEGetCoercionHandler(DescType fromType, DescType toType, AECoercionHandlerUPP *handler, SRefCon *handlerRefcon, Boolean *fromTypeIsDesc,
                           Boolean isSysHandler);

// The flattened form: a descriptor with all that it holds as one run of bytes, for a file or the way to another process.

/// The length; 0 for what is nested deeper than 256 levels.
Size AESizeOfFlattenedDesc(const AEDesc *desc);
/// errAEBufferTooSmall; the actual size (may be null) is told all the same.
OSStatus AEFlattenDesc(const AEDesc *desc, Ptr buffer, Size bufferSize, Size *actualSize);
/// Reads as many bytes as the form's head says: for bytes that are known to be whole.
OSStatus AEUnflattenDesc(const void *buffer, AEDesc *result);
/// The same for bytes from outside, which must be exactly the form. errAECorruptData otherwise.
OSStatus AEUnflattenDescFromBytes(const void *buffer, size_t bufferSize, AEDesc *result);

enum {
    errAECoercionFail      = -1700, ///< the data can't be of the type asked for
    errAEDescNotFound      = -1701,
    errAECorruptData       = -1702,
    errAEWrongDataType     = -1703,
    errAENotAEDesc         = -1704,
    errAEBadListItem       = -1705,
    errAENewerVersion      = -1706, ///< a flattened form of a later version
    errAENotAppleEvent     = -1707,
    errAEEventNotHandled   = -1708, ///< there is no handler for it
    errAEReplyNotValid     = -1709,
    errAEUnknownSendMode   = -1710,
    errAEWaitCanceled      = -1711,
    errAETimeout           = -1712,
    errAENoUserInteraction = -1713,
    errAENotASpecialFunction = -1714,
    errAEParamMissed       = -1715, ///< a parameter that the event needs was not asked for
    errAEUnknownAddressType = -1716,
    errAEHandlerNotFound   = -1717,
    errAEReplyNotArrived   = -1718,
    errAEIllegalIndex      = -1719,
    errAEBufferTooSmall    = -1741,
    errAEEventFailed       = -10000 ///< a handler failed in a way that it doesn't explain
};

#ifdef __cplusplus
}
#endif
