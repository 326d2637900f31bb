/// \file
/// Data types and constants of the Common Security Services Manager (The Open Group, C914): those that
/// sessions, digests, ciphers and key derivation need. Names and numbers are the published ones.
#pragma once

#include <Security/cssmconfig.h>

#ifdef __cplusplus
extern "C" {
#endif

// --- Handles

typedef CSSM_INTPTR CSSM_HANDLE, *CSSM_HANDLE_PTR;
typedef uint64 CSSM_LONG_HANDLE, *CSSM_LONG_HANDLE_PTR;

typedef CSSM_HANDLE CSSM_MODULE_HANDLE, *CSSM_MODULE_HANDLE_PTR;
typedef CSSM_MODULE_HANDLE CSSM_CSP_HANDLE;  ///< an attached cryptographic service provider
typedef CSSM_LONG_HANDLE CSSM_CC_HANDLE;     ///< a cryptographic context

enum { CSSM_INVALID_HANDLE = 0 };

// --- Results, data, identifiers

typedef sint32 CSSM_BOOL;
enum { CSSM_FALSE = 0, CSSM_TRUE = 1 };

typedef sint32 CSSM_RETURN;  ///< CSSM_OK or one of <Security/cssmerr.h>

/// A run of bytes. As a result with Data null and Length 0 it asks the provider to allocate through the
/// attached memory functions; with Data set, Length is the room there, and becomes the number of bytes
/// written.
typedef struct cssm_data {
    CSSM_SIZE Length;
    uint8 *Data;
} CSSM_DATA, *CSSM_DATA_PTR;

typedef struct cssm_guid {
    uint32 Data1;
    uint16 Data2;
    uint16 Data3;
    uint8 Data4[8];
} CSSM_GUID, *CSSM_GUID_PTR;

typedef struct cssm_version {
    uint32 Major;
    uint32 Minor;
} CSSM_VERSION, *CSSM_VERSION_PTR;

typedef struct cssm_date {
    uint8 Year[4];
    uint8 Month[2];
    uint8 Day[2];
} CSSM_DATE, *CSSM_DATE_PTR;

// --- Start-up and modules

typedef uint32 CSSM_BITMASK;

typedef CSSM_BITMASK CSSM_KEY_HIERARCHY;
enum { CSSM_KEY_HIERARCHY_NONE = 0, CSSM_KEY_HIERARCHY_INTEG = 1, CSSM_KEY_HIERARCHY_EXPORT = 2 };

typedef CSSM_BITMASK CSSM_PVC_MODE;
enum { CSSM_PVC_NONE = 0, CSSM_PVC_APP = 1, CSSM_PVC_SP = 2 };

typedef uint32 CSSM_PRIVILEGE_SCOPE;
enum { CSSM_PRIVILEGE_SCOPE_NONE = 0, CSSM_PRIVILEGE_SCOPE_PROCESS = 1, CSSM_PRIVILEGE_SCOPE_THREAD = 2 };

typedef CSSM_BITMASK CSSM_SERVICE_MASK;
typedef CSSM_SERVICE_MASK CSSM_SERVICE_TYPE;
enum { CSSM_SERVICE_CSSM = 0x1, CSSM_SERVICE_CSP = 0x2 };

typedef uint32 CSSM_ATTACH_FLAGS;
enum { CSSM_ATTACH_READ_ONLY = 0x1 };

typedef void *(*CSSM_MALLOC)(CSSM_SIZE size, void *allocref);
typedef void (*CSSM_FREE)(void *memblock, void *allocref);
typedef void *(*CSSM_REALLOC)(void *memblock, CSSM_SIZE size, void *allocref);
typedef void *(*CSSM_CALLOC)(uint32 num, CSSM_SIZE size, void *allocref);

/// How the provider allocates what it hands out; AllocRef is passed back as each function's last argument.
typedef struct cssm_memory_funcs {
    CSSM_MALLOC malloc_func;
    CSSM_FREE free_func;
    CSSM_REALLOC realloc_func;
    CSSM_CALLOC calloc_func;
    void *AllocRef;
} CSSM_MEMORY_FUNCS, *CSSM_MEMORY_FUNCS_PTR;

typedef CSSM_MEMORY_FUNCS CSSM_API_MEMORY_FUNCS;
typedef CSSM_API_MEMORY_FUNCS *CSSM_API_MEMORY_FUNCS_PTR;

typedef uint32 CSSM_MODULE_EVENT, *CSSM_MODULE_EVENT_PTR;
typedef CSSM_RETURN (*CSSM_API_ModuleEventHandler)(const CSSM_GUID *ModuleGuid, void *AppNotifyCallbackCtx,
                                                   uint32 SubserviceId, CSSM_SERVICE_TYPE ServiceType,
                                                   CSSM_MODULE_EVENT EventType);

typedef void (*CSSM_PROC_ADDR)(void);
typedef struct cssm_func_name_addr {
    char Name[68];
    CSSM_PROC_ADDR Address;
} CSSM_FUNC_NAME_ADDR, *CSSM_FUNC_NAME_ADDR_PTR;

// --- Algorithms, modes, paddings

typedef uint32 CSSM_ALGORITHMS;
enum {
    CSSM_ALGID_NONE = 0,
    CSSM_ALGID_MD5 = 7,
    CSSM_ALGID_SHA1 = 8,
    CSSM_ALGID_DES = 14,
    CSSM_ALGID_3DES_3KEY_EDE = 17,
    CSSM_ALGID_3DES_3KEY = CSSM_ALGID_3DES_3KEY_EDE,
    CSSM_ALGID_RC2 = 23,
    CSSM_ALGID_RC5 = 24,
    CSSM_ALGID_RC4 = 25,
    CSSM_ALGID_RSA = 42,
    CSSM_ALGID_PKCS5_PBKDF2 = 103
};
/// Numbers from here on are each vendor's own; <Security/cssmapple.h> has the platform's.
#define CSSM_ALGID_VENDOR_DEFINED 0x80000000u

typedef uint32 CSSM_ENCRYPT_MODE;
enum {
    CSSM_ALGMODE_NONE = 0,
    CSSM_ALGMODE_ECB = 2,
    CSSM_ALGMODE_ECBPad = 3,
    CSSM_ALGMODE_CBC_IV8 = 5,
    CSSM_ALGMODE_CBCPadIV8 = 6
};

typedef uint32 CSSM_PADDING;
enum { CSSM_PADDING_NONE = 0, CSSM_PADDING_PKCS5 = 6, CSSM_PADDING_PKCS7 = 7, CSSM_PADDING_PKCS1 = 10 };

// --- Keys

typedef uint32 CSSM_HEADERVERSION;
enum { CSSM_KEYHEADER_VERSION = 2 };

typedef uint32 CSSM_KEYBLOB_TYPE;
enum { CSSM_KEYBLOB_RAW = 0, CSSM_KEYBLOB_REFERENCE = 2, CSSM_KEYBLOB_WRAPPED = 3 };

typedef uint32 CSSM_KEYBLOB_FORMAT;
enum {
    CSSM_KEYBLOB_RAW_FORMAT_NONE = 0,
    CSSM_KEYBLOB_RAW_FORMAT_PKCS1 = 1,   ///< RSAPublicKey, RSAPrivateKey (RFC 8017), DER
    CSSM_KEYBLOB_RAW_FORMAT_PKCS8 = 10,  ///< PrivateKeyInfo (RFC 5208), DER
    CSSM_KEYBLOB_RAW_FORMAT_SPKI = 11,   ///< SubjectPublicKeyInfo (RFC 5280), DER
    CSSM_KEYBLOB_RAW_FORMAT_OCTET_STRING = 12
};

typedef uint32 CSSM_KEYCLASS;
enum { CSSM_KEYCLASS_PUBLIC_KEY = 0, CSSM_KEYCLASS_PRIVATE_KEY = 1, CSSM_KEYCLASS_SESSION_KEY = 2 };

typedef uint32 CSSM_KEYATTR_FLAGS;
enum {
    CSSM_KEYATTR_RETURN_DEFAULT = 0x00000000,
    CSSM_KEYATTR_PERMANENT = 0x00000001,
    CSSM_KEYATTR_PRIVATE = 0x00000002,
    CSSM_KEYATTR_MODIFIABLE = 0x00000004,
    CSSM_KEYATTR_SENSITIVE = 0x00000008,
    CSSM_KEYATTR_EXTRACTABLE = 0x00000020,
    CSSM_KEYATTR_RETURN_DATA = 0x10000000,
    CSSM_KEYATTR_RETURN_REF = 0x20000000,
    CSSM_KEYATTR_RETURN_NONE = 0x40000000
};

typedef uint32 CSSM_KEYUSE;
#define CSSM_KEYUSE_ANY 0x80000000u
enum {
    CSSM_KEYUSE_ENCRYPT = 0x00000001,
    CSSM_KEYUSE_DECRYPT = 0x00000002,
    CSSM_KEYUSE_SIGN = 0x00000004,
    CSSM_KEYUSE_VERIFY = 0x00000008,
    CSSM_KEYUSE_WRAP = 0x00000040,
    CSSM_KEYUSE_UNWRAP = 0x00000080,
    CSSM_KEYUSE_DERIVE = 0x00000100
};

typedef struct cssm_keyheader {
    CSSM_HEADERVERSION HeaderVersion;
    CSSM_GUID CspId;
    CSSM_KEYBLOB_TYPE BlobType;
    CSSM_KEYBLOB_FORMAT Format;
    CSSM_ALGORITHMS AlgorithmId;
    CSSM_KEYCLASS KeyClass;
    uint32 LogicalKeySizeInBits;
    CSSM_KEYATTR_FLAGS KeyAttr;
    CSSM_KEYUSE KeyUsage;
    CSSM_DATE StartDate;
    CSSM_DATE EndDate;
    CSSM_ALGORITHMS WrapAlgorithmId;
    CSSM_ENCRYPT_MODE WrapMode;
    uint32 Reserved;
} CSSM_KEYHEADER, *CSSM_KEYHEADER_PTR;

typedef struct cssm_key {
    CSSM_KEYHEADER KeyHeader;
    CSSM_DATA KeyData;
} CSSM_KEY, *CSSM_KEY_PTR;

typedef CSSM_ALGORITHMS CSSM_KEY_TYPE;

/// Access control, which a provider that keeps no keys has no use for: pass null.
typedef struct cssm_access_credentials CSSM_ACCESS_CREDENTIALS, *CSSM_ACCESS_CREDENTIALS_PTR;
typedef struct cssm_resource_control_context CSSM_RESOURCE_CONTROL_CONTEXT,
    *CSSM_RESOURCE_CONTROL_CONTEXT_PTR;

typedef CSSM_RETURN (*CSSM_CALLBACK)(CSSM_DATA_PTR OutData, void *CallerCtx);

/// A secret, given at once (Param) or asked for when it is needed (Callback).
typedef struct cssm_crypto_data {
    CSSM_DATA Param;
    CSSM_CALLBACK Callback;
    void *CallerCtx;
} CSSM_CRYPTO_DATA, *CSSM_CRYPTO_DATA_PTR;

typedef uint32 CSSM_PKCS5_PBKDF2_PRF;
enum { CSSM_PKCS5_PBKDF2_PRF_HMAC_SHA1 = 0 };

/// What CSSM_DeriveKey's Param points at for CSSM_ALGID_PKCS5_PBKDF2.
typedef struct cssm_pkcs5_pbkdf2_params {
    CSSM_DATA Passphrase;
    CSSM_PKCS5_PBKDF2_PRF PseudoRandomFunction;
} CSSM_PKCS5_PBKDF2_PARAMS, *CSSM_PKCS5_PBKDF2_PARAMS_PTR;

// --- Context attributes

#define CSSM_ATTRIBUTE_DATA_UINT32 0x10000000u
#define CSSM_ATTRIBUTE_DATA_CSSM_DATA 0x20000000u
#define CSSM_ATTRIBUTE_DATA_KEY 0x40000000u

typedef uint32 CSSM_ATTRIBUTE_TYPE;
enum {
    CSSM_ATTRIBUTE_KEY = CSSM_ATTRIBUTE_DATA_KEY | 3,
    CSSM_ATTRIBUTE_INIT_VECTOR = CSSM_ATTRIBUTE_DATA_CSSM_DATA | 4,
    CSSM_ATTRIBUTE_SALT = CSSM_ATTRIBUTE_DATA_CSSM_DATA | 5,
    CSSM_ATTRIBUTE_PADDING = CSSM_ATTRIBUTE_DATA_UINT32 | 6,
    CSSM_ATTRIBUTE_KEY_LENGTH = CSSM_ATTRIBUTE_DATA_UINT32 | 10,
    CSSM_ATTRIBUTE_ROUNDS = CSSM_ATTRIBUTE_DATA_UINT32 | 14,
    CSSM_ATTRIBUTE_KEY_TYPE = CSSM_ATTRIBUTE_DATA_UINT32 | 18,
    CSSM_ATTRIBUTE_MODE = CSSM_ATTRIBUTE_DATA_UINT32 | 19,
    CSSM_ATTRIBUTE_EFFECTIVE_BITS = CSSM_ATTRIBUTE_DATA_UINT32 | 20,
    CSSM_ATTRIBUTE_ITERATION_COUNT = CSSM_ATTRIBUTE_DATA_UINT32 | 30
};

typedef struct cssm_context_attribute {
    CSSM_ATTRIBUTE_TYPE AttributeType;
    uint32 AttributeLength;
    union cssm_context_attribute_value {
        uint32 Uint32;
        CSSM_KEY_PTR Key;
        CSSM_DATA_PTR Data;
    } Attribute;
} CSSM_CONTEXT_ATTRIBUTE, *CSSM_CONTEXT_ATTRIBUTE_PTR;

#ifdef __cplusplus
}
#endif
