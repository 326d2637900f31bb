/// \file
/// The catalogue as XML, for other programs and for this one:
///
///     <?xml version="1.0" encoding="UTF-8"?>
///     <catalogue>
///       <image>
///         <name>Photos</name>
///         <path>/home/anna/Photos.img</path>
///         <size>1048576</size>
///         <sha1>a9993e364706816aba3e25717850c26c9cd0d89d</sha1>
///         <label>Red</label>
///         <note>For aunt Erna &amp; family</note>
///       </image>
///     </catalogue>
///
/// Elements without a value are left out. Characters that XML can't hold (control characters) are left out too.
#pragma once
#import <Foundation/Foundation.h>

#include <optional>
#include <string>

namespace shelf {

/// Rows that are no dictionaries or have no path are passed over.
std::string xmlOfRows(NSArray *rows);
/// The rows of such a text, back as they were; nothing when it is no catalogue.
std::optional<NSArray *> rowsOfXML(const std::string &xml);

}  // namespace shelf
