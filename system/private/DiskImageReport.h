/// \file
/// The report of attached images, as a tool prints it: read without trust in what is in it.
#pragma once
#import <Foundation/Foundation.h>

namespace tarvik {

/// The report's property list; nil when the text is none in XML.
id diskImageReport(NSData *text);
/// Image paths by mount point. Whatever is not as it should be (no path, an array that is none) is passed over.
NSMutableDictionary *mountTable(id report);

}  // namespace tarvik
