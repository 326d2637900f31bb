#include <Tarvik/support/CFOwned.h>
#include <Tarvik/ui/Scraps.h>

using tarvik::CFOwned;

ScrapRef ScrapGetCurrentScrap(void)
{
    ScrapRef scrap = nullptr;
    return GetCurrentScrap(&scrap) == noErr ? scrap : nullptr;
}

CFMutableDataRef ScrapCopyDataOfFlavor(ScrapRef scrap, ScrapFlavorType flavor)
{
    Size asked = 0;
    if (!scrap || GetScrapFlavorSize(scrap, flavor, &asked) != noErr || asked <= 0)
        return nullptr;
    CFOwned<CFMutableDataRef> data(CFDataCreateMutable(nullptr, asked));
    CFDataSetLength(data.get(), asked);
    Size read = asked;
    if (GetScrapFlavorData(scrap, flavor, &read, CFDataGetMutableBytePtr(data.get())) != noErr ||
        read != asked)
        return nullptr;
    return data.release();
}

CFMutableStringRef ScrapCopyString(ScrapRef scrap)
{
    const CFOwned<CFMutableDataRef> data(ScrapCopyDataOfFlavor(scrap, kScrapFlavorTypeText));
    const CFOwned<CFStringRef> text(
        data ? CFStringCreateFromExternalRepresentation(nullptr, data.get(), CFStringGetSystemEncoding())
             : nullptr);
    return text ? CFStringCreateMutableCopy(nullptr, 0, text.get()) : nullptr;
}
