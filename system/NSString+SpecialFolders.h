/// \file
/// Paths of well-known folders.
///
///     [NSString stringWithFindFolder:kUserDomain type:kDocumentsFolderType createFolder:YES]     -> "/home/anna/Documents"
///     [NSString stringWithApplicationTemporary]                                                  -> "/home/anna/.cache/tmp/org.example.Ink"
///
/// Results are autoreleased, but for those of init. Thread: any.
#pragma once
#ifdef __OBJC__
#include <Carbon/Folders.h>
#import <Foundation/NSString.h>

@interface NSString (FoundationXSpecialFolders)

/// Nil when there is no such folder.
- (id)initWithFindFolder:(SInt16)domain type:(OSType)folderType createFolder:(BOOL)createFolder;
+ (id)stringWithFindFolder:(SInt16)domain type:(OSType)folderType createFolder:(BOOL)createFolder;

/// The application's own folder for temporary files, made if needed: named by the main bundle's identifier, without one by its executable. Nil when it
/// could not be made. An exception is logged and gives nil.
+ (NSString *)stringWithApplicationTemporary;

@end
#endif
