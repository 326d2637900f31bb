/// \file
/// What scripts ask of the user and of the desktop. The half of the platform that has windows installs its own presenter when it is
/// loaded; without one these commands fail with -1713.
#pragma once
#include <Carbon/MacTypes.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tarvik::osa {

/// A question to the user. Texts are UTF-8.
struct Dialog {
    enum Icon : uint8_t { plain, note, caution, stop };
    Icon icon = plain;
    std::string title, message, explanation;  // message: the heading
    std::optional<std::string> answer;        // a field to type into, with this in it
    bool hidesAnswer = false;
    std::vector<std::string> buttons;  // from left to right
    int byDefault = -1, cancels = -1;  // which of them Return and Escape press
    double givesUpAfter = 0;           // seconds; 0: never
    std::function<bool()> isStopped;   // asked now and then: true takes it away
};

struct DialogAnswer {
    int button = -1;  // -1: it gave up, or was stopped
    std::string text;
    bool gaveUp = false;
};

/// One form of what is on the clipboard.
struct ClipboardFlavor {
    uint32_t type;
    size_t size;
};

class Presenter {
public:
    virtual ~Presenter() = default;
    /// Waits for the answer. False: it can't be shown (no display, not the main thread).
    virtual bool show(const Dialog &dialog, DialogAnswer &answer) = 0;
    /// The clipboard, by the Scrap Manager's types and errors; 'TEXT' is UTF-8.
    virtual OSStatus clipboardFlavors(std::vector<ClipboardFlavor> &flavors) = 0;
    virtual OSStatus clipboard(uint32_t flavor, std::string &bytes) = 0;
    virtual OSStatus setClipboard(uint32_t flavor, const std::string &bytes) = 0;
};

/// Null, where nothing in this process shows anything. Asks the host's loader for one, once (OSASetInteractionLoader).
Presenter *presenter();
/// It lives as long as the process.
void installPresenter(Presenter *presenter);

}  // namespace tarvik::osa
