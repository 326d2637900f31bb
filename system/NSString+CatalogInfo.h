/// \file
/// What the File Manager's catalog knows of the item at a path, and its older records. The receiver is the path; no tilde is expanded.
///
///     FSCatalogInfo info;
///     [path getFSCatalogInfo:&info ofBitmap:kFSCatInfoDataSizes]     -> YES; info.dataLogicalSize
///
/// Results are autoreleased, but for those of init. Thread: any.
#pragma once
#ifdef __OBJC__
#include <Carbon/Files.h>
#import <Foundation/NSString.h>

@interface NSString (FoundationXCatalogInfo)

/// Fills the record, all zero first, with the fields of the bitmap.
- (BOOL)getFSCatalogInfo:(FSCatalogInfo *)info ofBitmap:(FSCatalogInfoBitmap)bitmap;
- (BOOL)setFSCatalogInfo:(const FSCatalogInfo *)info ofBitmap:(FSCatalogInfoBitmap)bitmap;

/// An FSSpec that leads nowhere leaves the receiver uninitialised and is no nil; callers rely on it.
- (id)initWithFSSpec:(const FSSpec *)spec;
+ (id)stringWithFSSpec:(const FSSpec *)spec;
- (BOOL)getFSSpec:(FSSpec *)spec;

@end
#endif
