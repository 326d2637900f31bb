/// \file
/// The functions of the Common Security Services Manager (The Open Group, C914) that this platform provides.
///
/// A session: CSSM_Init, CSSM_ModuleLoad, CSSM_ModuleAttach; then for each piece of work a context, the work,
/// and CSSM_DeleteContext; at last CSSM_ModuleDetach. One context serves any number of operations, one after
/// another.
///
/// - Result: CSSM_OK or a code of <Security/cssmerr.h>; what a failing call had allocated is wiped and freed.
/// - Handles are checked: a stale, foreign or made-up one gives CSSMERR_CSSM_INVALID_CONTEXT_HANDLE or
/// _INVALID_ADDIN_HANDLE.
/// - Outputs: see CSSM_DATA. What the provider allocates comes from the memory functions of
/// CSSM_ModuleAttach; the caller frees it.
/// - Inputs: any number of buffers, taken as one run of bytes. Data may be null where Length is 0. Output is
/// one buffer.
/// - Keys, vectors and salts are copied into the context, and wiped when it is deleted.
/// - Threads: every call may be made from any thread; one context serves one call at a time, a second
/// meanwhile gets
///   CSSMERR_CSSM_INVALID_HANDLE_USAGE.
#pragma once

#include <Security/cssmtype.h>

#ifdef __cplusplus
extern "C" {
#endif

// --- Session

/// Starts the service. Version must be 2.0. Calls nest; each wants its CSSM_Terminate. PvcPolicy may be null;
/// else it is answered with CSSM_PVC_NONE, as no caller is verified. Reserved is null.
CSSM_RETURN CSSMAPI CSSM_Init(const CSSM_VERSION *Version, CSSM_PRIVILEGE_SCOPE Scope,
                              const CSSM_GUID *CallerGuid, CSSM_KEY_HIERARCHY KeyHierarchy,
                              CSSM_PVC_MODE *PvcPolicy, const void *Reserved);

/// Undoes one CSSM_Init. Attached modules and their contexts stay usable.
CSSM_RETURN CSSMAPI CSSM_Terminate(void);

/// Loads a module; the one there is has the identifier gGuidAppleCSP. Calls nest. The event handler is never
/// called.
CSSM_RETURN CSSMAPI CSSM_ModuleLoad(const CSSM_GUID *ModuleGuid, CSSM_KEY_HIERARCHY KeyHierarchy,
                                    CSSM_API_ModuleEventHandler AppNotifyCallback,
                                    void *AppNotifyCallbackCtx);

/// Undoes one CSSM_ModuleLoad. What is attached stays usable.
CSSM_RETURN CSSMAPI CSSM_ModuleUnload(const CSSM_GUID *ModuleGuid,
                                      CSSM_API_ModuleEventHandler AppNotifyCallback,
                                      void *AppNotifyCallbackCtx);

/// Attaches the loaded provider: version 2.0, sub-service 0, service type CSSM_SERVICE_CSP. All four memory
/// functions must be set. FunctionTable and Reserved are null.
CSSM_RETURN CSSMAPI CSSM_ModuleAttach(const CSSM_GUID *ModuleGuid, const CSSM_VERSION *Version,
                                      const CSSM_API_MEMORY_FUNCS *MemoryFuncs, uint32 SubserviceID,
                                      CSSM_SERVICE_TYPE SubServiceType, CSSM_ATTACH_FLAGS AttachFlags,
                                      CSSM_KEY_HIERARCHY KeyHierarchy, CSSM_FUNC_NAME_ADDR *FunctionTable,
                                      uint32 NumFunctionTable, const void *Reserved,
                                      CSSM_MODULE_HANDLE_PTR NewModuleHandle);

/// Detaches the provider and deletes the contexts made with this handle.
/// CSSMERR_CSSM_INVALID_HANDLE_USAGE, and nothing done, while one of them is at work in another thread.
CSSM_RETURN CSSMAPI CSSM_ModuleDetach(CSSM_MODULE_HANDLE ModuleHandle);

// --- Contexts

/// MD5 (RFC 1321) or SHA-1 (FIPS 180).
CSSM_RETURN CSSMAPI CSSM_CSP_CreateDigestContext(CSSM_CSP_HANDLE CSPHandle, CSSM_ALGORITHMS AlgorithmID,
                                                 CSSM_CC_HANDLE *NewContextHandle);

/// A cipher with one key for both directions. What key, vector, mode and padding must be is checked when work
/// starts.
///
/// | algorithm                | key, bits                | block | modes                                   |
/// |--------------------------|--------------------------|-------|-----------------------------------------|
/// | DES, 3DES_3KEY           | 64; 192 (parity ignored) | 8     | ECB, ECBPad, CBC_IV8, CBCPadIV8         |
/// | RC2 (RFC 2268)           | 8 to 1024                | 8     | the same; effective bits: the key's own |
/// | RC5-32/12 (RFC 2040)     | 0 to 2040                | 8     | the same; ROUNDS 0 to 255               |
/// | AES                      | 128, 192, 256            | 16    | the same                                |
/// | RC4                      | 8 to 2048                | none  | NONE                                    |
///
/// Padding is CSSM_PADDING_PKCS5 or _PKCS7, which do the same, in the Pad modes and CSSM_PADDING_NONE in the
/// others. The vector may be longer than the block, whose first bytes are then taken: eight-byte ciphers
/// share a vector of 16 with AES.
CSSM_RETURN CSSMAPI CSSM_CSP_CreateSymmetricContext(CSSM_CSP_HANDLE CSPHandle, CSSM_ALGORITHMS AlgorithmID,
                                                    CSSM_ENCRYPT_MODE Mode,
                                                    const CSSM_ACCESS_CREDENTIALS *AccessCred,
                                                    const CSSM_KEY *Key, const CSSM_DATA *InitVector,
                                                    CSSM_PADDING Padding, void *Reserved,
                                                    CSSM_CC_HANDLE *NewContextHandle);

/// RSA with CSSM_PADDING_PKCS1 (RFC 8017, RSAES-PKCS1-v1_5): the public key encrypts, the private one
/// decrypts. Keys are raw DER in the PKCS1 format, or SPKI (public) and PKCS8 (private), of 512 to 16384
/// bits.
CSSM_RETURN CSSMAPI CSSM_CSP_CreateAsymmetricContext(CSSM_CSP_HANDLE CSPHandle, CSSM_ALGORITHMS AlgorithmID,
                                                     const CSSM_ACCESS_CREDENTIALS *AccessCred,
                                                     const CSSM_KEY *Key, CSSM_PADDING Padding,
                                                     CSSM_CC_HANDLE *NewContextHandle);

/// PBKDF2 (RFC 8018). BaseKey and Seed are not used by it: pass null.
CSSM_RETURN CSSMAPI CSSM_CSP_CreateDeriveKeyContext(CSSM_CSP_HANDLE CSPHandle, CSSM_ALGORITHMS AlgorithmID,
                                                    CSSM_KEY_TYPE DeriveKeyType, uint32 DeriveKeyLengthInBits,
                                                    const CSSM_ACCESS_CREDENTIALS *AccessCred,
                                                    const CSSM_KEY *BaseKey, uint32 IterationCount,
                                                    const CSSM_DATA *Salt, const CSSM_CRYPTO_DATA *Seed,
                                                    CSSM_CC_HANDLE *NewContextHandle);

/// Sets attributes of a context, all or none: CSSMERR_CSSM_INVALID_ATTRIBUTE for one that the context has no
/// use for.
CSSM_RETURN CSSMAPI CSSM_UpdateContextAttributes(CSSM_CC_HANDLE CCHandle, uint32 NumberOfAttributes,
                                                 const CSSM_CONTEXT_ATTRIBUTE *ContextAttributes);

CSSM_RETURN CSSMAPI CSSM_DeleteContext(CSSM_CC_HANDLE CCHandle);

// --- Digests

CSSM_RETURN CSSMAPI CSSM_DigestData(CSSM_CC_HANDLE CCHandle, const CSSM_DATA *DataBufs, uint32 DataBufCount,
                                    CSSM_DATA_PTR Digest);

CSSM_RETURN CSSMAPI CSSM_DigestDataInit(CSSM_CC_HANDLE CCHandle);
CSSM_RETURN CSSMAPI CSSM_DigestDataUpdate(CSSM_CC_HANDLE CCHandle, const CSSM_DATA *DataBufs,
                                          uint32 DataBufCount);
CSSM_RETURN CSSMAPI CSSM_DigestDataFinal(CSSM_CC_HANDLE CCHandle, CSSM_DATA_PTR Digest);

// --- Ciphers

/// One whole message. The result's length is bytesEncrypted plus RemData's: with a buffer of the provider
/// everything is in CipherBufs and RemData stays empty; with one of the caller the last block goes to RemData
/// where it no longer fits.
CSSM_RETURN CSSMAPI CSSM_EncryptData(CSSM_CC_HANDLE CCHandle, const CSSM_DATA *ClearBufs,
                                     uint32 ClearBufCount, CSSM_DATA_PTR CipherBufs, uint32 CipherBufCount,
                                     CSSM_SIZE *bytesEncrypted, CSSM_DATA_PTR RemData);

/// The reverse. A length that is no multiple of the block: CSSMERR_CSP_INPUT_LENGTH_ERROR; padding that can't
/// be right (a wrong key, most often): CSSMERR_CSP_INVALID_DATA.
CSSM_RETURN CSSMAPI CSSM_DecryptData(CSSM_CC_HANDLE CCHandle, const CSSM_DATA *CipherBufs,
                                     uint32 CipherBufCount, CSSM_DATA_PTR ClearBufs, uint32 ClearBufCount,
                                     CSSM_SIZE *bytesDecrypted, CSSM_DATA_PTR RemData);

/// The same in pieces: Init, any number of Updates, Final. A failing step ends the operation.
CSSM_RETURN CSSMAPI CSSM_EncryptDataInit(CSSM_CC_HANDLE CCHandle);
CSSM_RETURN CSSMAPI CSSM_EncryptDataUpdate(CSSM_CC_HANDLE CCHandle, const CSSM_DATA *ClearBufs,
                                           uint32 ClearBufCount, CSSM_DATA_PTR CipherBufs,
                                           uint32 CipherBufCount, CSSM_SIZE *bytesEncrypted);
CSSM_RETURN CSSMAPI CSSM_EncryptDataFinal(CSSM_CC_HANDLE CCHandle, CSSM_DATA_PTR RemData);

CSSM_RETURN CSSMAPI CSSM_DecryptDataInit(CSSM_CC_HANDLE CCHandle);
CSSM_RETURN CSSMAPI CSSM_DecryptDataUpdate(CSSM_CC_HANDLE CCHandle, const CSSM_DATA *CipherBufs,
                                           uint32 CipherBufCount, CSSM_DATA_PTR ClearBufs,
                                           uint32 ClearBufCount, CSSM_SIZE *bytesDecrypted);
CSSM_RETURN CSSMAPI CSSM_DecryptDataFinal(CSSM_CC_HANDLE CCHandle, CSSM_DATA_PTR RemData);

// --- Keys

/// Derives a session key of the context's type and size. Param holds a CSSM_PKCS5_PBKDF2_PARAMS. The key
/// comes as data in DerivedKey->KeyData, for CSSM_FreeKey; permanent keys and key references are
/// CSSMERR_CSP_UNSUPPORTED_KEYATTR_MASK. A size that the key type can't have is
/// CSSMERR_CSP_UNSUPPORTED_KEY_SIZE. The label names stored keys only.
CSSM_RETURN CSSMAPI CSSM_DeriveKey(CSSM_CC_HANDLE CCHandle, CSSM_DATA_PTR Param, uint32 KeyUsage,
                                   uint32 KeyAttr, const CSSM_DATA *KeyLabel,
                                   const CSSM_RESOURCE_CONTROL_CONTEXT *CredAndAclEntry,
                                   CSSM_KEY_PTR DerivedKey);

/// Wipes and frees the key's data and zeroes the record's reference to it.
CSSM_RETURN CSSMAPI CSSM_FreeKey(CSSM_CSP_HANDLE CSPHandle, const CSSM_ACCESS_CREDENTIALS *AccessCred,
                                 CSSM_KEY_PTR KeyPtr, CSSM_BOOL Delete);

#ifdef __cplusplus
}
#endif
