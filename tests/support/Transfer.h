// One load by NSURLConnection, waited for, with everything that its delegate was told.
#pragma once
#import <Foundation/Foundation.h>
#include <Tarvik/support/Retained.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

struct Transfer {
    bool ended = false;  // finished or failed
    int status = 0, chunks = 0, redirects = 0, challenges = 0;
    std::string body;
    NSInteger error = 0;  // NSURLErrorDomain
    double seconds = 0;
    tarvik::Retained<NSHTTPURLResponse *> response;

    // The field of the response; empty when absent.
    std::string field(const char *name) const;
};

struct Load {
    std::string url, method = "GET", body = {};
    std::vector<std::pair<std::string, std::string>> headers = {};
    NSURLRequestCachePolicy policy = NSURLRequestReloadIgnoringCacheData;
    double limit = 10;
    bool refusesRedirects = false;
    std::string user = {}, password = {};                 // the answer to the first challenge
    std::function<void(NSURLConnection *)> onChunk = {};  // called with each
    double patience = 15;                                 // then the transfer is left as it is
};
Transfer run(const Load &load);
