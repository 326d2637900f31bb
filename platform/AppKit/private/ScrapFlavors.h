// What the clipboard holds.
#pragma once
#include <Carbon/Scrap.h>

#include <vector>

namespace tarvik {

/// The flavors that are there, text as 'TEXT' only.
OSStatus scrapFlavors(std::vector<ScrapFlavorType> &flavors);

}  // namespace tarvik
