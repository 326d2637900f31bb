/// \file
/// One encryption or decryption under way, whatever carries it out.
#pragma once

#include <Security/cssmtype.h>

#include <memory>
#include <span>

namespace cssm {

struct Attributes;

class CipherRun {
public:
    virtual ~CipherRun() = default;

    /// The most that update may write for so many bytes of input, and finish.
    virtual size_t updateBound(size_t inputLength) const = 0;
    virtual size_t finishBound() const = 0;

    /// Takes input and writes what is ready to `output`, which has room for updateBound. A message that comes
    /// in one piece may be written where it is read.
    virtual CSSM_RETURN update(std::span<const uint8> input, uint8 *output, size_t &written) = 0;

    /// Writes the rest to `output`, which has room for finishBound.
    virtual CSSM_RETURN finish(uint8 *output, size_t &written) = 0;
};

/// Sets up a run after checking the attributes. `run` is left empty on failure.
CSSM_RETURN startSymmetric(CSSM_ALGORITHMS algorithm, const Attributes &attributes, bool encrypting,
                           std::unique_ptr<CipherRun> &run);
CSSM_RETURN startAsymmetric(CSSM_ALGORITHMS algorithm, const Attributes &attributes, bool encrypting,
                            std::unique_ptr<CipherRun> &run);

/// Whether the symmetric algorithm is one of ours, and takes a key of that size. Sizes are only looked at for
/// ours.
bool isSymmetric(CSSM_ALGORITHMS algorithm);
bool takesKeyOf(CSSM_ALGORITHMS algorithm, size_t bytes);

}  // namespace cssm
