/// The NSHTTPURLResponse of a loaded URL. gnustep-base's own finds neither the length nor the text encoding
/// unless the fields are spelled its way.
#pragma once

#include "HTTPTransfer.h"

#import <Foundation/Foundation.h>

@interface LoadedHTTPResponse : NSHTTPURLResponse {
    NSInteger _status;
    NSDictionary *_fields;
    NSString *_fileName;
}

/// Field names get their usual capitals ("content-type" becomes "Content-Type"); repeated fields are joined
/// with ", ".
- (id)initWithURL:(NSURL *)url head:(const http::Head &)head;

@end

/// Bytes from the network as text: UTF-8, else Latin-1; never nil.
NSString *HTTPText(std::string_view bytes);

/// The value of a parameter such as charset="utf-8" in a field like "text/html; charset=utf-8"; nil when
/// absent.
NSString *HTTPFieldParameter(std::string_view field, std::string_view name);
