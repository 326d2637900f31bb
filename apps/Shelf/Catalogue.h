/// \file
/// The catalogue of disk images: what a row holds, shows and compares by, and where its image is now. Needs no window.
///
///     NSMutableDictionary *row = shelf::rowForImage(@"/home/anna/Photos.img", failure);
///     shelf::shownSize(1536)          -> "1.5 KB"
///     shelf::survey(rows).mounts      -> { "/home/anna/Photos.img" = "/media/anna/Photos"; }
///
/// A row is a dictionary as the user defaults keep it. It may come from anywhere: a row that is no dictionary, and a value of
/// another type than expected, read as empty.
#pragma once
#import <Foundation/Foundation.h>
#import <Tarvik/support/Retained.h>

#include <stdint.h>

namespace shelf {

// Keys of a row: the table's columns, and the alias by which a moved image is found again.
extern NSString *const kName;      // shown, the user's to edit
extern NSString *const kPath;      // full, without symbolic links
extern NSString *const kMounted;   // a column only: never stored
extern NSString *const kSize;      // bytes, a number
extern NSString *const kChecksum;  // SHA-1 in lower-case hexadecimal, once it was computed
extern NSString *const kLabel;     // 0 (none) to 7: the toolkit's label colours
extern NSString *const kNote;
extern NSString *const kAlias;  // the alias record's bytes
/// The user defaults' key of all rows.
extern NSString *const kImagesDefault;

constexpr int kLabelCount = 8;
/// "None", "Red", ... in English; nil outside.
NSString *labelName(int index);

/// A new row for an image file. Nil when it isn't there, is no file or can't be read: `failure` says which, in a sentence.
NSMutableDictionary *rowForImage(NSString *path, NSString *&failure);
/// The path as reports of mounted images have it: full, without symbolic links.
NSString *fullPath(NSString *path);

/// A text of the row; empty for another kind of value.
NSString *text(id row, NSString *key);
/// A number of the row that is not negative; 0 for another kind of value.
int64_t number(id row, NSString *key);
int label(id row);

/// "0 bytes", "1.5 KB", "4.7 GB": by 1024.
NSString *shownSize(int64_t bytes);
/// By a column: texts without regard to case, size and label by number. `mounts` is as in Survey.
NSComparisonResult compare(id row, id other, NSString *key, NSDictionary *mounts);

/// What the system says about the images of a catalogue.
struct Survey {
    tarvik::Retained<NSDictionary *> mounts;  // mount point by image path
    tarvik::Retained<NSSet *> missing;        // paths where nothing is
    tarvik::Retained<NSDictionary *> moved;   // new path by old, where the alias leads elsewhere
};
/// Asks the system about rows. Any thread, with rows that nobody changes meanwhile: `snapshot` makes such.
Survey survey(NSArray *rows);
NSArray *snapshot(NSArray *rows);

/// Rows with paths that `known` has not: an image is in the catalogue once. Adds what it answers to `known`.
NSArray *unknownRows(NSArray *rows, NSMutableSet *known);
NSMutableSet *pathsOf(NSArray *rows);
/// Rows that came from outside, made safe to keep: dictionaries with a path, only the known keys, each of its type.
NSArray *adoptedRows(id rows);

/// A catalogue of the defaults that is no array would be written over: it is put aside under another key. Whether it was.
bool putForeignCatalogueAside(NSUserDefaults *defaults);

}  // namespace shelf
