/// \file
/// An owned descriptor of an Apple event: disposed of at the end of the scope.
///
///     tarvik::OwnedDesc title;
///     if (AEGetParamDesc(event, keyDirectObject, typeUTF8Text, title.out()) == noErr)
///         show(title.get());
#pragma once
#ifdef __cplusplus
#include <Carbon/AEDataModel.h>

#include <utility>

namespace tarvik {

class OwnedDesc {
public:
    OwnedDesc() = default;
    /// Takes over what the caller owns.
    explicit OwnedDesc(const AEDesc &desc) : desc_(desc) {}
    OwnedDesc(OwnedDesc &&other) noexcept : desc_(other.release()) {}
    OwnedDesc &operator=(OwnedDesc &&other) noexcept
    {
        if (this != &other)
            *out() = other.release();
        return *this;
    }
    ~OwnedDesc() { AEDisposeDesc(&desc_); }

    AEDesc *get() { return &desc_; }
    const AEDesc *get() const { return &desc_; }
    const AEDesc *operator->() const { return &desc_; }
    /// For a function that fills it: what was held is disposed of first.
    AEDesc *out()
    {
        AEDisposeDesc(&desc_);
        return &desc_;
    }
    /// Gives up ownership: the caller disposes of the result.
    [[nodiscard]] AEDesc release() { return std::exchange(desc_, AEDesc{typeNull, nullptr}); }

private:
    AEDesc desc_ = {typeNull, nullptr};
};

}  // namespace tarvik
#endif
