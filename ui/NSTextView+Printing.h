/// \file
/// Text views printed at the page's width.
#pragma once
#ifdef __OBJC__
#import <AppKit/NSTextView.h>

@interface NSTextView (AppKitX)
/// Asks for the page with the page-layout panel, then prints with the shared print information, its print panel included, the
/// text as wide as the page between its margins (divided by the scaling factor). The view has its frame again afterwards; the
/// print information stays as it was set, without vertical centring.
/// \return NO when the user cancelled the page layout. Thread: main.
- (BOOL)runPrintModal;
@end
#endif
