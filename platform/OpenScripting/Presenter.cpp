#include "private/Presenter.h"

#include <Carbon/OSA.h>

#include <atomic>

namespace tarvik::osa {

namespace {
std::atomic<Presenter *> gPresenter{nullptr};
std::atomic<OSAInteractionLoader> gLoader{nullptr};
}  // namespace

Presenter *presenter()
{
    if (!gPresenter)
        if (const OSAInteractionLoader loader = gLoader.exchange(nullptr))
            loader();
    return gPresenter;
}

void installPresenter(Presenter *presenter) { gPresenter = presenter; }

}  // namespace tarvik::osa

void OSASetInteractionLoader(OSAInteractionLoader loader) { tarvik::osa::gLoader = loader; }
