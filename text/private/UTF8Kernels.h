/// \file
/// The machinery below UTF8.h: cursors over input and output, and one kernel for each family of processors.
///
/// A kernel takes the easy road only: it converts whole blocks at a time and stops where a block needs thought (malformed
/// text, a zero character, too little room). The drivers decode() and encode() call it, take the next stretch element by
/// element, and call it again, so that every kernel gives the same result for every input, well formed or not.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tarvik::utf8 {

/// UTF-8 that is still to be read, and the room that is left for its code points.
struct DecodeCursor {
    const uint8_t *in;
    const uint8_t *inEnd;
    wchar_t *out;
    wchar_t *outEnd;
    bool streams = false;  ///< The output is too large for the caches: stores may go around them.
};

/// Code points that are still to be read, and the room that is left for their UTF-8.
struct EncodeCursor {
    const wchar_t *in;
    const wchar_t *inEnd;
    char *out;
    char *outEnd;
};

/// One way to convert whole blocks.
///
/// A kernel advances a cursor over as much as it can. It never reads at or after `inEnd`, and writes nothing at or after
/// `outEnd`, but may leave rubbish between the `out` that it reaches and `outEnd`. It may stop anywhere between two characters.
struct Kernel {
    const char *name;
    bool (*runsHere)();
    void (*decode)(DecodeCursor &);
    void (*encode)(EncodeCursor &);
};

/// Elements (decoding) or bytes (encoding) of room that every kernel needs for a block: give that much more than the result.
inline constexpr size_t kBlockRoom = 64;

/// The kernels of this build, the portable one first and the fastest last. Not all of them run on every processor.
std::span<const Kernel> kernels();

/// The fastest kernel that runs on this processor.
const Kernel &bestKernel();

/// Why a conversion stopped.
enum class Stop { InputEnd, OutputFull, Zero };

/// Decodes until the input ends, the room is used up, or a code point is 0 (which is consumed, but not written).
Stop decode(const Kernel &kernel, DecodeCursor &cursor);

/// Encodes until the input ends or less than the three bytes of the longest character are left.
Stop encode(const Kernel &kernel, EncodeCursor &cursor);

void decodePortable(DecodeCursor &);
void encodePortable(EncodeCursor &);

#if defined(__x86_64__)
void decodeSSE4(DecodeCursor &);
void encodeSSE4(EncodeCursor &);
void decodeAVX2(DecodeCursor &);
void encodeAVX2(EncodeCursor &);
void decodeAVX512(DecodeCursor &);
void encodeAVX512(EncodeCursor &);
#endif

}  // namespace tarvik::utf8
