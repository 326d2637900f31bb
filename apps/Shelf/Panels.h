/// \file
/// Questions to the user, as sheets of a window. Each returns at once or when it is answered; the answer comes by the function,
/// on the main thread. A cancelled file panel answers nothing.
#pragma once
#import <AppKit/AppKit.h>

#include <functional>

namespace shelf {

struct Alert {
    NSString *title, *message;
    NSString *defaultButton = nil;    // nil: "OK"
    NSString *alternateButton = nil;  // nil: none
    bool isFailure = true;
};
/// Whether the default button was chosen.
void ask(NSWindow *window, const Alert &alert, std::function<void(bool)> answer = {});

void chooseImages(NSWindow *window, std::function<void(NSArray *paths)> answer);
void chooseFolder(NSWindow *window, NSString *prompt, std::function<void(NSString *path)> answer);
struct Destination {
    NSString *title, *name, *type;  // the panel's title; the file's name and its extension
    NSString *folder = nil;         // nil: where the user was last
};
/// Where to save. The panel has asked whether a file there may be replaced.
void chooseDestination(NSWindow *window, const Destination &proposed,
                       std::function<void(NSString *path)> answer);
/// A line of text. Empty or cancelled: nothing is answered.
void chooseText(NSWindow *window, NSString *question, NSString *initial, NSString *button,
                std::function<void(NSString *)> answer);

}  // namespace shelf
