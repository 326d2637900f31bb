#include <Carbon/Dialogs.h>

#include <atomic>

namespace {
std::atomic<StandardAlertPresenter> gPresenter{nullptr};
}

StandardAlertPresenter SetStandardAlertPresenter(StandardAlertPresenter presenter)
{
    return gPresenter.exchange(presenter);
}

OSErr StandardAlert(AlertType alertType, ConstStr255Param error, ConstStr255Param explanation,
                    const AlertStdAlertParamRec *alertParam, SInt16 *itemHit)
{
    if (!itemHit)
        return paramErr;
    StandardAlertPresenter presenter = gPresenter;
    return presenter ? presenter(alertType, error, explanation, alertParam, itemHit) : OSErr(unimpErr);
}
