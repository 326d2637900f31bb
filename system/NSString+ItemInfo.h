/// \file
/// What Launch Services knows of the item at a path. The receiver is the path; a leading tilde is expanded.
///
///     [@"/Apps/Ink.app" isApplication]     -> YES (package and container too)
///     [@"/nowhere" isPlainFile]            -> YES: an unknown item counts as a plain file, and callers rely on it
///     [@"/tmp" isFolder]                   -> YES
///
/// The flags of the latest string asked are kept, by the string object: asked again, it answers the same, whatever became of the file.
/// Links are not followed. Thread: one for all of them.
#pragma once
#ifdef __OBJC__
#include <Carbon/LSInfo.h>
#import <Foundation/NSString.h>

@interface NSString (FoundationXItemInfo)

/// Fills the record, all zero first. The caller releases the strings in it; there are none after NO.
- (BOOL)getLSItemInfoRecord:(LSItemInfoRecord *)record whichInfo:(LSRequestedInfo)whichInfo;

/// Type and creator codes; 0 when unknown.
- (OSType)HFSFileType;
- (OSType)HFSCreator;
/// The same as four characters.
- (NSString *)HFSFileTypeString;
- (NSString *)HFSCreatorString;

/// Whether all flags of the mask are set; the default when the item can't be looked up.
- (BOOL)isLSItemInfoRecordFlagOn:(LSItemInfoFlags)mask defaultResult:(BOOL)defaultResult;
- (BOOL)isAlias;
- (BOOL)isApplication;
- (BOOL)isContainer;
- (BOOL)isInvisible;
- (BOOL)isPackage;
- (BOOL)isVolume;
- (BOOL)isPlainFile;
- (BOOL)isDirectory;  ///< container and not volume
- (BOOL)isFolder;     ///< container, not package, not volume

@end
#endif
