/// \file
/// What is done in every application that links the library, as it begins to be launched: AppKit has loaded what it draws with, and has
/// shown nothing yet. A process may launch more than one application, as tests do: the function is then called again.
///
///     const tarvik::AtLaunch ordered([] { ... });
#pragma once

namespace tarvik {

class AtLaunch {
public:
    explicit AtLaunch(void (*function)());
};

}  // namespace tarvik
