/// \file
/// Digests, password-derived keys and ciphers over the platform's crypto service (CSSM), with the conversions
/// to and from hexadecimal text.
///
///     CSSM_CSP_HANDLE csp;
///     CSSM_DATA digest;
///     CDSAUtilityBase::cdsaCspAttach(&csp);
///     CDSAUtilityBase::oneShotDigest(csp, CSSM_ALGID_MD5, "abc", &digest);   // 0; 900150983cd24fb0...
///     free(digest.Data);
///     CDSAUtilityBase::cdsaCspDetach(csp);
///
/// - Result: 0, or the provider's status unchanged (<Security/cssmerr.h>; cssmErrorString names it). The
///   one-shot digests answer -1 for every failure, file functions the errno value.
/// - Outputs are allocated with the C library's malloc: the caller frees them. Keys go back through
///   cdsaFreeKey, which wipes them. After a failure an output is empty (null, 0). What an output record held
///   before does not matter.
/// - Threads: the first call of cssmStartup or cdsaCspAttach must be over before others begin. Digests and
///   keys may then be worked on from any thread; ciphers share one initialisation vector, so that their
///   calls must not overlap.
#pragma once
#ifdef __cplusplus
#include <Security/cssm.h>

#include <cstddef>
#include <cstdint>
#include <string>

class CDSAUtilityBase {
public:
    virtual ~CDSAUtilityBase();

    // --- Session

    /// Initialises the service, once in the process.
    static CSSM_RETURN cssmStartup();
    /// Attaches the standard provider, starting the service if need be.
    static CSSM_RETURN cdsaCspAttach(CSSM_CSP_HANDLE *csp);
    static CSSM_RETURN cdsaCspDetach(CSSM_CSP_HANDLE csp);

    // --- Digests: CSSM_ALGID_MD5 (16 bytes) and CSSM_ALGID_SHA1 (20)

    static CSSM_RETURN cdsaDigest(CSSM_CSP_HANDLE csp, CSSM_ALGORITHMS algorithm, const CSSM_DATA *data,
                                  CSSM_DATA *digest);

    /// Begins a digest in pieces. The context ends with the final call of cdsaStagedDigest, or a failing one.
    static CSSM_RETURN cdsaStagedDigestInit(CSSM_CSP_HANDLE csp, CSSM_ALGORITHMS algorithm,
                                            CSSM_CC_HANDLE *context);
    /// Takes a piece, which may be empty or null; the final one brings the digest.
    static CSSM_RETURN cdsaStagedDigest(CSSM_CC_HANDLE context, bool final, const CSSM_DATA *data,
                                        CSSM_DATA *digest);

    /// The digest of a text without its terminating zero, or of bytes. 0 or -1; the provider's reason is
    /// printed on standard error under the label "Attach to CSP", although that is not the step which failed.
    static CSSM_RETURN oneShotDigest(CSSM_CSP_HANDLE csp, CSSM_ALGORITHMS algorithm, const char *text,
                                     CSSM_DATA *digest);
    static CSSM_RETURN oneShotDigest(CSSM_CSP_HANDLE csp, CSSM_ALGORITHMS algorithm,
                                     const unsigned char *bytes, size_t length, CSSM_DATA *digest);
    /// The same of a file, held in memory as a whole. -1 also when it can't be read.
    static CSSM_RETURN oneShotDigestFromFile(CSSM_CSP_HANDLE csp, CSSM_ALGORITHMS algorithm, const char *path,
                                             CSSM_DATA *digest);
    /// The digest of a file of any size, in pieces: up to the first read of 256 bytes that brings fewer. An
    /// errno value when the file can't be read.
    static CSSM_RETURN stagedDigest(CSSM_CSP_HANDLE csp, CSSM_ALGORITHMS algorithm, const char *path,
                                    CSSM_DATA *digest);

    /// A whole file, for the caller to free. 0 or an errno value; a file that turns out shorter than its size
    /// prints "readFile: short read" on standard error.
    static int readFile(const char *path, unsigned char **bytes, uint64_t *length);

    // --- Ciphers

    /// The context that goes with the key's algorithm, for the caller to delete. Without a vector, the
    /// process-wide one.
    ///
    /// | algorithm                                                      | mode                    | padding |
    /// |----------------------------------------------------------------|-------------------------|---------|
    /// | DES, RC2, RC5, triple DES                                      | CBC, 8 bytes of vector  | PKCS#5  |
    /// | AES                                                            | CBC, 16 bytes of vector | PKCS#7  |
    /// | RC4; CSSM_ALGID_ASC, which the provider answers as unsupported | none                    | none    |
    /// | RSA                                                            | asymmetric              | PKCS#1  |
    ///
    /// Any other algorithm is 0x80010801, CSSMERR_CSP_INTERNAL_ERROR, and no context is made.
    static CSSM_RETURN genCryptHandle(CSSM_CSP_HANDLE csp, const CSSM_KEY *key, const CSSM_DATA *vector,
                                      CSSM_CC_HANDLE *context);

    /// A key of so many bits from a password: PBKDF2 with HMAC-SHA1, 1000 rounds, the salt "bramWick".
    static CSSM_RETURN cdsaDeriveKey(CSSM_CSP_HANDLE csp, const void *password, size_t passwordLength,
                                     CSSM_ALGORITHMS keyAlgorithm, uint32_t keySizeInBits, CSSM_KEY *key);
    /// Wipes and frees a key.
    static CSSM_RETURN cdsaFreeKey(CSSM_CSP_HANDLE csp, CSSM_KEY *key);

    /// One message, with the context of genCryptHandle and the process-wide vector.
    static CSSM_RETURN cdsaEncrypt(CSSM_CSP_HANDLE csp, const CSSM_KEY *key, const CSSM_DATA *input,
                                   CSSM_DATA *output);
    static CSSM_RETURN cdsaDecrypt(CSSM_CSP_HANDLE csp, const CSSM_KEY *key, const CSSM_DATA *input,
                                   CSSM_DATA *output);

    /// Encrypts or decrypts with a key of 256 bits derived from the password, whatever the algorithm: those
    /// that can't take that size (DES, triple DES) answer CSSMERR_CSP_UNSUPPORTED_KEY_SIZE.
    ///
    ///     std::string secret, back, vector = "000102030405060708090a0b0c0d0e0f";
    ///     CDSAUtilityBase::encryptData(CSSM_ALGID_AES, "text", "password", secret, vector, true);
    ///     CDSAUtilityBase::encryptData(CSSM_ALGID_AES, secret, "password", back, vector, false);   // "text"
    ///
    /// Encrypting takes the data as it is and writes hexadecimal text; decrypting takes hexadecimal text and
    /// writes the bytes. The vector is hexadecimal in both directions and becomes the process-wide one: 16
    /// bytes, filled up with zeros, cut when longer; an empty text leaves the process-wide one as it is.
    /// Encrypting writes the vector used back. Any byte may stand in data and password. Failures are printed
    /// by cssmPerror under the labels "Attach to CSP", "DeriveKey", "cdsaEncrypt" and "cdsaDecrypt", and
    /// leave `out` as it was.
    static CSSM_RETURN encryptData(CSSM_ALGORITHMS keyAlgorithm, const std::string &data,
                                   const std::string &password, std::string &out, std::string &vectorText,
                                   bool encrypt);

    // --- Hexadecimal text

    /// Writes a byte for every two characters, high digit first; an odd last one is dropped. Nothing is
    /// validated: a character up to '9' counts as its code less '0', others below 'a' as theirs less 'A' plus
    /// 10, the rest as theirs less 'a' plus 10. Returns the text's length; 1 for a null output, else 0 for a
    /// null text.
    ///
    ///     convertHEXStringToHEXValue("0aFF", bytes)  -> 4, bytes 0A FF
    ///     convertHEXStringToHEXValue("abc", bytes)   -> 3, byte AB
    static size_t convertHEXStringToHEXValue(const char *text, unsigned char *bytes);

    /// Writes two lowercase digits a byte and a terminating zero; just that for a count of 0 or less.
    ///
    ///     convertHEXValueToHEXString("\x0A\xFF", 2, text)  -> "0aff"
    static void convertHEXValueToHEXString(const unsigned char *bytes, int count, char *text);
};
#endif
