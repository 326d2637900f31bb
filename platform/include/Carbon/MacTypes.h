/// MacTypes.h: the basic types that the C frameworks of this platform share.
///
/// Widths are the platform's: an SInt32 is 32 bits in every process. Compiles as C, C++ and Objective-C++.
#pragma once

#include <Carbon/MacErrors.h>
#include <stddef.h>
#include <stdint.h>

typedef unsigned char Boolean; ///< 0 is false, everything else true; the functions answer 0 or 1

typedef uint8_t  UInt8;
typedef int8_t   SInt8;
typedef uint16_t UInt16;
typedef int16_t  SInt16;
typedef uint32_t UInt32;
typedef int32_t  SInt32;
typedef uint64_t UInt64;
typedef int64_t  SInt64;
typedef uint8_t  Byte;
typedef int8_t   SignedByte;

typedef float  Float32;
typedef double Float64;
typedef SInt32 Fixed; ///< 16 bits before the binary point, 16 behind it
typedef SInt32 Fract; ///< 2 bits before the binary point, 30 behind it

typedef SInt16 OSErr;    ///< a platform error: 0 is success, errors are negative
typedef SInt32 OSStatus; ///< the same with the wider range

typedef UInt32      FourCharCode; ///< four characters, the first one in the most significant byte
typedef uint32_t    OSType;
typedef FourCharCode ResType;
typedef OSType     *OSTypePtr;
typedef ResType    *ResTypePtr;
typedef UInt32      OptionBits;
typedef UInt32      ItemCount;
typedef UInt32      ByteCount;
typedef UInt32      ByteOffset;
typedef SInt32      Duration;
typedef SInt16      ScriptCode;
typedef SInt16      LangCode;
typedef SInt16      RegionCode;
typedef UInt32      TextEncoding;
typedef UInt32      PBVersion;
typedef UInt32      FMGeneration;

typedef char        *Ptr;
typedef Ptr         *Handle; ///< a relocatable block of memory: its length is asked with GetHandleSize
typedef long         Size;
typedef void        *LogicalAddress;
typedef const void  *ConstLogicalAddress;
typedef unsigned long URefCon;
typedef long         SRefCon;

typedef UInt16   UniChar; ///< one UTF-16 unit
typedef UInt32   UTF32Char;
typedef UInt16   UTF16Char;
typedef UInt8    UTF8Char;
typedef UniChar *UniCharPtr;
typedef unsigned long UniCharCount;
typedef UniCharCount *UniCharCountPtr;
typedef unsigned long UniCharArrayOffset;

/// Pascal strings: one length byte, then that many bytes.
typedef unsigned char        Str255[256];
typedef unsigned char        Str63[64];
typedef unsigned char        Str32[33];
typedef unsigned char        Str31[32];
typedef unsigned char        Str27[28];
typedef unsigned char        Str15[16];
typedef unsigned char        StrFileName[64];
typedef unsigned char       *StringPtr;
typedef const unsigned char *ConstStringPtr;
typedef const unsigned char *ConstStr255Param;
typedef const unsigned char *ConstStr63Param;
typedef const unsigned char *ConstStr31Param;
typedef const unsigned char *ConstStrFileNameParam;
typedef StringPtr           *StringHandle;

/// A process, by a number that is not used again while the session lasts.
struct ProcessSerialNumber {
    UInt32 highLongOfPSN;
    UInt32 lowLongOfPSN;
};
typedef struct ProcessSerialNumber ProcessSerialNumber;
typedef ProcessSerialNumber       *ProcessSerialNumberPtr;

/// Toolbox geometry: y grows downward.
struct Point {
    short v;
    short h;
};
typedef struct Point Point;
typedef Point       *PointPtr;

struct Rect {
    short top;
    short left;
    short bottom;
    short right;
};
typedef struct Rect Rect;
typedef Rect       *RectPtr;

/// The numeric version, from the lowest address in this processor's (little-endian) order.
struct NumVersion {
    UInt8 nonRelRev;
    UInt8 stage; ///< developStage ... finalStage
    UInt8 minorAndBugRev;
    UInt8 majorRev; ///< binary-coded decimal
};
typedef struct NumVersion NumVersion;

enum { developStage = 0x20, alphaStage = 0x40, betaStage = 0x60, finalStage = 0x80 };

union NumVersionVariant {
    NumVersion parts;
    UInt32     whole;
};
typedef union NumVersionVariant NumVersionVariant;

/// A 'vers' resource, unpacked: 518 bytes.
struct VersRec {
    NumVersion numericVersion;
    SInt16     countryCode;
    Str255     shortVersion;
    Str255     reserved; ///< the long version
};
typedef struct VersRec VersRec;
typedef VersRec       *VersRecPtr;
typedef VersRecPtr    *VersRecHndl;

enum { noErr = 0 };
enum { kNilOptions = 0 };
enum { kInvalidID = 0 };
enum { kUnknownType = 0x3F3F3F3F }; ///< '????'
