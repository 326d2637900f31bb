#include "HTTPErrors.h"

#include "LoadedHTTPResponse.h"

NSError *HTTPError(NSInteger code, const std::string &why, NSURL *url)
{
    NSMutableDictionary *info = [NSMutableDictionary dictionaryWithObject:HTTPText(why)
                                                                   forKey:NSLocalizedDescriptionKey];
    if (url) {
        [info setObject:url forKey:@"NSErrorFailingURLKey"];
        [info setObject:[url absoluteString] forKey:@"NSErrorFailingURLStringKey"];
    }
    return [NSError errorWithDomain:NSURLErrorDomain code:code userInfo:info];
}

static NSInteger certificateError(long verification)
{
    switch (verification) {  // OpenSSL's X509_V_ERR_*
    case 9: return NSURLErrorServerCertificateNotYetValid;
    case 10: return NSURLErrorServerCertificateHasBadDate;
    case 2:
    case 18:
    case 19:
    case 20:
    case 21: return NSURLErrorServerCertificateHasUnknownRoot;
    default: return NSURLErrorServerCertificateUntrusted;
    }
}

NSInteger HTTPErrorCode(const http::Outcome &outcome)
{
    switch (outcome.code) {
    case CURLE_URL_MALFORMAT: return NSURLErrorBadURL;
    case CURLE_UNSUPPORTED_PROTOCOL: return NSURLErrorUnsupportedURL;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY: return NSURLErrorCannotFindHost;
    case CURLE_COULDNT_CONNECT: return NSURLErrorCannotConnectToHost;
    case CURLE_OPERATION_TIMEDOUT: return NSURLErrorTimedOut;
    case CURLE_GOT_NOTHING:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_PARTIAL_FILE: return NSURLErrorNetworkConnectionLost;
    case CURLE_PEER_FAILED_VERIFICATION: return certificateError(outcome.certificate);
    case CURLE_SSL_CERTPROBLEM: return NSURLErrorClientCertificateRejected;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CACERT_BADFILE: return NSURLErrorSecureConnectionFailed;
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_HTTP2:
    case CURLE_BAD_CONTENT_ENCODING:
    case CURLE_WRITE_ERROR: return NSURLErrorBadServerResponse;
    default: return NSURLErrorUnknown;
    }
}
