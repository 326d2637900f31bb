/// \file
/// What a report says about the machine. Nothing fails: what is not known is empty.
///
///     Utils::getOsVersion()      "12"                  Utils::getCountry()         "AT"
///     Utils::getOsName()         "Apple MacOS 12"      Utils::getLanguage()        "de-AT"
///     Utils::getProcessorType()  "Intel"               Utils::generateGUID()       "1B0F...-02420A010203"
///
/// Thread: any, except that the first calls of `getOsName` and `getOsVersion` must not run beside each other.
#pragma once
#include <stdint.h>

#ifdef __cplusplus
#include <Tarvik/text/WideString.h>

#include <string>

namespace Utils {

/// "Apple MacOS " and the version; empty when the version is not known. Read once.
wstring getOsName();
/// The version as the system's version file has it. Read once, an empty one again.
wstring getOsVersion();
/// The packed version number, 0x1049 for 10.4.9; 0 when it is not known.
uint32_t getOsBuildNumber();

/// The country of the user default "AppleLocale", else of the environment's locale: what follows the first
/// "_". A locale without one is the result itself ("de"), one that ends in it loses it ("en_" gives "en").
wstring getCountry();
/// The first of the user default "AppleLanguages", else of the environment's languages, whole ("en-GB").
wstring getLanguage();
/// "68k", "PowerPC" or "Intel", which also stands for every other processor.
wstring getProcessorType();

/// A new identifier in the form of a UUID: its first 24 characters are random, the last 12 are the hardware
/// address of the machine's primary network interface, in upper case. Without such an interface they are
/// random too. What goes wrong on the way is told on standard output.
std::string generateGUID();

}  // namespace Utils

#endif
