/// Where a redirect leads, and with what request (RFC 9110, 15.4).
#pragma once

#import <Foundation/Foundation.h>

#include <string>

/// The most redirects in a row.
constexpr int kHTTPMostRedirects = 20;

bool HTTPIsRedirect(int status);

/// A Location resolved against the URL that gave it; nil unless that is an http or https URL. gnustep-base
/// keeps the old query and leaves dot segments in.
NSURL *HTTPResolvedLocation(NSURL *base, const std::string &location);

/// The request to follow with: 303 asks by GET, and so do 301 and 302 after a POST. Credentials and cookies
/// of the first request stay behind where they don't belong.
NSURLRequest *HTTPRedirectedRequest(NSURLRequest *request, NSURL *url, int status);

/// How many redirects have led to this request.
int HTTPRedirectCount(NSURLRequest *request);

/// The URL's port, or its scheme's.
int HTTPPort(NSURL *url);
