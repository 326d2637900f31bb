/// Failed exchanges as errors of NSURLErrorDomain.
#pragma once

#include "HTTPTransfer.h"

#import <Foundation/Foundation.h>

/// The code for an outcome other than success: NSURLErrorTimedOut, NSURLErrorServerCertificateHasBadDate, ...
NSInteger HTTPErrorCode(const http::Outcome &outcome);

/// An error of that code about a URL, with `why` as its description.
NSError *HTTPError(NSInteger code, const std::string &why, NSURL *url);
