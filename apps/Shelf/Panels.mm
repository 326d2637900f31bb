#include "Panels.h"

#include "Closure.h"

#include <Tarvik/TarvikUI.h>
#import <Tarvik/support/ArrayRange.h>

#include <utility>

/// The modal delegate of one panel; releases itself once it is answered.
@interface PanelAnswer : NSObject {
@public
    Closure<std::function<void(id panel, int code)>> mAnswer;
    NSPanel *mTextPanel;
}
- (void)panel:(id)panel ended:(int)code context:(void *)context;
- (void)endText:(id)sender;
@end

@implementation PanelAnswer

- (void)panel:(id)panel ended:(int)code context:(void *)context
{
    (void)context;
    [self autorelease];
    const auto answer = mAnswer.take();
    if ([panel respondsToSelector:@selector(orderOut:)])
        [panel orderOut:nil];
    if (answer)
        answer(panel, code);
}

- (void)endText:(id)sender
{
    [mTextPanel closeSheetWithReturnCode:int32_t([sender tag])];
}

@end

namespace shelf {
namespace {

PanelAnswer *answering(std::function<void(id, int)> answer)
{
    PanelAnswer *object = [[PanelAnswer alloc] init];
    object->mAnswer = std::move(answer);
    return object;
}

const SEL kEnded = @selector(panel:ended:context:);

/// A message of the alert functions is a format.
NSString *formatOf(NSString *text)
{
    return [[text componentsSeparatedByString:@"%"] componentsJoinedByString:@"%%"];
}

void openPanel(NSWindow *window, bool folders, NSString *prompt, std::function<void(NSArray *)> answer)
{
    PanelAnswer *delegate = answering([answer](id panel, int code) {
        if (code == NSOKButton && [[panel filenames] count])
            answer([panel filenames]);
    });
    NSOpenPanel *panel = [NSOpenPanel openPanel];
    [panel setTitle:prompt];
    [NSOpenPanel beginSheetWithSetting:panel
                                 prompt:nil
                   canChooseDirectories:folders
                         canChooseFiles:!folders
                allowsMultipleSelection:!folders
        treatsFilePackagesAsDirectories:NO
                   canCreateDirectories:NO
                                message:nil
                                 window:window
                              directory:nil
                                   file:nil
                                  types:nil
                          modalDelegate:delegate
                         didEndSelector:kEnded
                            contextInfo:nullptr];
}

}  // namespace

void ask(NSWindow *window, const Alert &alert, std::function<void(bool)> answer)
{
    PanelAnswer *delegate = answering([answer](id, int code) {
        if (answer)
            answer(code == NSAlertDefaultReturn);
    });
    [window displayIfNeeded];
    constexpr int32_t kAlert = 0, kInformation = 1;
    [NSPanel runGenericAlert:alert.isFailure ? kAlert : kInformation
                      parent:window
               modalDelegate:delegate
              didEndSelector:kEnded
          didDismissSelector:nullptr
                 contextInfo:nullptr
                       title:alert.title
                     message:formatOf(alert.message)
               defaultButton:alert.defaultButton ? alert.defaultButton : [@"OK" localize]
             alternateButton:alert.alternateButton
                 otherButton:nil];
}

void chooseImages(NSWindow *window, std::function<void(NSArray *)> answer)
{
    openPanel(window, false, [@"Add Images" localize], std::move(answer));
}

void chooseFolder(NSWindow *window, NSString *prompt, std::function<void(NSString *)> answer)
{
    openPanel(window, true, prompt, [answer](NSArray *paths) { answer([paths objectAtIndex:0]); });
}

void chooseDestination(NSWindow *window, const Destination &proposed, std::function<void(NSString *)> answer)
{
    PanelAnswer *delegate = answering([answer](id panel, int code) {
        if (code == NSOKButton && [panel filename])
            answer([panel filename]);
    });
    [NSSavePanel beginSheetWithSetting:nil
                       requiredFileType:proposed.type
                   canCreateDirectories:YES
               canSelectHiddenExtension:NO
                        extensionHidden:NO
        treatsFilePackagesAsDirectories:NO
                                 prompt:nil
                                  title:proposed.title
                         nameFieldLabel:nil
                                message:nil
                                 window:window
                              directory:proposed.folder
                                   file:proposed.name
                          modalDelegate:delegate
                         didEndSelector:kEnded
                            contextInfo:nullptr];
}

void chooseText(NSWindow *window, NSString *question, NSString *initial, NSString *button,
                std::function<void(NSString *)> answer)
{
    constexpr CGFloat width = 460, height = 118;
    NSPanel *panel = [[NSPanel alloc] initWithContentRect:NSMakeRect(0, 0, width, height)
                                                styleMask:NSTitledWindowMask
                                                  backing:NSBackingStoreBuffered
                                                    defer:NO];
    NSTextField *label =
        [[[NSTextField alloc] initWithFrame:NSMakeRect(16, height - 40, width - 32, 18)] autorelease];
    [label setStringValue:question];
    [label setEditable:NO];
    [label setBezeled:NO];
    [label setDrawsBackground:NO];
    NSTextField *field =
        [[[NSTextField alloc] initWithFrame:NSMakeRect(16, height - 68, width - 32, 24)] autorelease];
    [field setStringValue:initial];
    PanelAnswer *delegate = answering([=](id, int code) {
        NSString *text = [[[field stringValue] copy] autorelease];
        [panel autorelease];
        if (code == NSOKButton && [text length])
            answer(text);
    });
    delegate->mTextPanel = panel;
    CGFloat right = width - 16;
    for (const auto &[title, code, key] :
         {std::tuple{button, NSInteger(NSOKButton), @"\r"},
          std::tuple{(NSString *)[@"Cancel" localize], NSInteger(NSCancelButton), @"\e"}}) {
        NSButton *end = [[[NSButton alloc] initWithFrame:NSMakeRect(right - 100, 12, 100, 28)] autorelease];
        [end setTitle:title];
        [end setBezelStyle:NSRoundedBezelStyle];
        [end setTag:code];
        [end setTarget:delegate];
        [end setAction:@selector(endText:)];
        [end setKeyEquivalent:key];
        [[panel contentView] addSubview:end];
        right -= 108;
    }
    [[panel contentView] addSubview:label];
    [[panel contentView] addSubview:field];
    [panel setInitialFirstResponder:field];
    [panel beginSheetForWindow:window modalDelegate:delegate didEndSelector:kEnded contextInfo:nullptr];
}

}  // namespace shelf
