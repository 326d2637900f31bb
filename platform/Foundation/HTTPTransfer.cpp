#include "HTTPTransfer.h"

#include <strings.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace http {

namespace {

/// One read from the socket. libcurl hands it on in pieces of 16 KiB, which are gathered into one delivery.
constexpr long kReadSize = 256 * 1024;

/// All header lines of a response together. libcurl limits a line, not their number.
constexpr size_t kLargestHead = 1024 * 1024;

constexpr size_t kSmallestChunk = 16 * 1024;

/// libcurl reads on as long as there is something to read: beyond this it has to wait for the delivery.
constexpr size_t kFullChunk = 1024 * 1024;

bool isToken(std::string_view text)
{
    constexpr std::string_view marks = "!#$%&'*+-.^_`|~";
    return !text.empty() && std::all_of(text.begin(), text.end(), [&](char c) {
        return (c >= '0' && c <= '9') || ((c | 0x20) >= 'a' && (c | 0x20) <= 'z') ||
               marks.find(c) != marks.npos;
    });
}

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n";
    const size_t first = text.find_first_not_of(blanks);
    if (first == text.npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

}  // namespace

bool isMethod(std::string_view method) { return isToken(method); }

bool isHeaderLine(std::string_view name, std::string_view value)
{
    return isToken(name) && value.find_first_of(std::string_view("\r\n\0", 3)) == value.npos;
}

const std::string *Head::find(const char *name) const
{
    for (const auto &[field, value] : fields)
        if (strcasecmp(field.c_str(), name) == 0)
            return &value;
    return nullptr;
}

Transfer::Transfer(Request request, Client &client) : request_(std::move(request)), client_(&client) {}

Transfer::~Transfer()
{
    curl_slist_free_all(headers_);
    free(body_.data);
}

bool Transfer::configure(CURL *handle)
{
    CURLcode status = CURLE_OK;
    const auto set = [&](CURLoption option, auto value) {
        if (status == CURLE_OK)
            status = curl_easy_setopt(handle, option, value);
    };
    const auto addHeader = [&](const char *line) {
        if (curl_slist *longer = curl_slist_append(headers_, line))
            headers_ = longer;
        else
            status = CURLE_OUT_OF_MEMORY;
    };

    set(CURLOPT_URL, request_.url.c_str());
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_HTTP_VERSION, long(CURL_HTTP_VERSION_1_1));
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_QUICK_EXIT, 1L);  // a resolver that does not answer must not hold up a cancelled transfer
    set(CURLOPT_BUFFERSIZE, kReadSize);
    set(CURLOPT_PRIVATE, static_cast<void *>(this));
    set(CURLOPT_ERRORBUFFER, message_);
    set(CURLOPT_HEADERFUNCTION, &Transfer::onHeader);
    set(CURLOPT_HEADERDATA, this);
    set(CURLOPT_WRITEFUNCTION, &Transfer::onBody);
    set(CURLOPT_WRITEDATA, this);
    set(CURLOPT_CONNECTTIMEOUT_MS, long(request_.idleLimit.count()));
    if (request_.decodesContent)
        set(CURLOPT_ACCEPT_ENCODING, "gzip, deflate");

    // libcurl trusts Debian's store; the two variables are OpenSSL's own way to name another.
    if (const char *file = getenv("SSL_CERT_FILE"); file && *file)
        set(CURLOPT_CAINFO, file);
    if (const char *folder = getenv("SSL_CERT_DIR"); folder && *folder)
        set(CURLOPT_CAPATH, folder);

    // Always said, so that libcurl does not look at the environment: the system's settings hold.
    set(CURLOPT_NOPROXY, "");
    set(CURLOPT_PROXY, request_.proxy.host.c_str());
    if (!request_.proxy.host.empty()) {
        set(CURLOPT_PROXYPORT, long(request_.proxy.port));
        set(CURLOPT_PROXYTYPE, long(CURLPROXY_HTTP));
        set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
        if (!request_.proxy.user.empty()) {
            set(CURLOPT_PROXYUSERNAME, request_.proxy.user.c_str());
            set(CURLOPT_PROXYPASSWORD, request_.proxy.password.c_str());
            set(CURLOPT_PROXYAUTH, long(CURLAUTH_BASIC | CURLAUTH_DIGEST));
        }
    }
    if (!request_.user.empty()) {
        set(CURLOPT_USERNAME, request_.user.c_str());
        set(CURLOPT_PASSWORD, request_.password.c_str());
        set(CURLOPT_HTTPAUTH, long(CURLAUTH_BASIC | CURLAUTH_DIGEST));
    }

    for (const std::string &line : request_.headers)
        addHeader(line.c_str());
    addHeader("Expect:");  // libcurl would wait a second for servers that do not know 100 Continue

    const bool isPost = request_.method == "POST";
    if (request_.method == "HEAD") {
        set(CURLOPT_NOBODY, 1L);
    } else if (request_.reader) {
        set(CURLOPT_POST, 1L);
        set(CURLOPT_READFUNCTION, &Transfer::onRead);
        set(CURLOPT_READDATA, this);
        if (request_.streamLength)
            set(CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t(*request_.streamLength));
        else
            addHeader("Transfer-Encoding: chunked");
    } else if (request_.body || isPost) {
        set(CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t(request_.bodyLength));
        set(CURLOPT_POSTFIELDS, request_.body ? static_cast<const char *>(request_.body) : "");
    } else {
        set(CURLOPT_HTTPGET, 1L);
    }
    if (!isPost && request_.method != "HEAD" &&
        (request_.method != "GET" || request_.body || request_.reader))
        set(CURLOPT_CUSTOMREQUEST, request_.method.c_str());
    set(CURLOPT_HTTPHEADER, headers_);
    easy = handle;
    return status == CURLE_OK;
}

bool Transfer::headIsFinal() const
{
    if (head_.status < 200)
        return false;
    // With credentials at hand libcurl answers the first challenge itself and a second head follows.
    const bool answersServer = head_.status == 401 && !request_.user.empty();
    const bool answersProxy = head_.status == 407 && !request_.proxy.user.empty();
    return !answersServer && !answersProxy;
}

bool Transfer::takeHeaderLine(std::string_view line)
{
    if (headDelivered_ || headReady_)
        return true;  // trailers of a chunked body
    if ((headSize_ += line.size()) > kLargestHead)
        return false;
    if (line.starts_with("HTTP/")) {
        head_ = {};
        headEnded_ = false;
        const size_t blank = line.find(' ');
        head_.version = line.substr(0, blank);
        head_.status = blank == line.npos ? 0 : atoi(std::string(line.substr(blank + 1, 4)).c_str());
        return true;
    }
    if (trimmed(line).empty()) {
        headEnded_ = true;
        headReady_ = headIsFinal();
        return true;
    }
    if ((line[0] == ' ' || line[0] == '\t') && !head_.fields.empty()) {  // a folded line
        head_.fields.back().second.append(" ").append(trimmed(line));
        return true;
    }
    const size_t colon = line.find(':');
    if (colon != line.npos)
        head_.fields.emplace_back(trimmed(line.substr(0, colon)), trimmed(line.substr(colon + 1)));
    return true;
}

size_t Transfer::onHeader(char *data, size_t, size_t size, void *self)
{
    return static_cast<Transfer *>(self)->takeHeaderLine({data, size}) ? size : 0;
}

size_t Transfer::onBody(char *data, size_t, size_t size, void *self)
{
    auto &transfer = *static_cast<Transfer *>(self);
    if (transfer.headEnded_ && !transfer.headDelivered_)
        transfer.headReady_ = true;
    if (transfer.body_.size >= kFullChunk) {
        transfer.full_ = true;
        return CURL_WRITEFUNC_PAUSE;
    }
    if (transfer.bodyCapacity_ - transfer.body_.size < size) {
        const size_t wanted = std::max(
            {transfer.body_.size + size, transfer.bodyCapacity_ * 2, transfer.usualChunk_, kSmallestChunk});
        char *larger = static_cast<char *>(realloc(transfer.body_.data, wanted));
        if (!larger)
            return 0;
        transfer.body_.data = larger;
        transfer.bodyCapacity_ = wanted;
    }
    memcpy(transfer.body_.data + transfer.body_.size, data, size);
    transfer.body_.size += size;
    return size;
}

size_t Transfer::onRead(char *data, size_t, size_t size, void *self)
{
    const ssize_t count = static_cast<Transfer *>(self)->request_.reader(data, size);
    return count < 0 ? size_t(CURL_READFUNC_ABORT) : size_t(count);
}

void Transfer::end(CURLcode code, long certificate)
{
    if (code == CURLE_OK && headEnded_ && !headDelivered_)
        headReady_ = true;
    if (code == CURLE_OK && !headEnded_)
        code = CURLE_GOT_NOTHING;
    outcome_ = Outcome{code, certificate, message_[0] ? message_ : curl_easy_strerror(code)};
}

void Transfer::deliver()
{
    if (headReady_ && client_ && !held_) {
        headReady_ = false;
        headDelivered_ = true;
        client_->receivedHead(head_);
    }
    if (headDelivered_ && body_.size && client_ && !held_) {
        full_ = false;
        Bytes chunk = std::exchange(body_, {});
        const size_t capacity = std::exchange(bodyCapacity_, 0);
        usualChunk_ = chunk.size;
        if (chunk.size < capacity / 2)
            if (char *smaller = static_cast<char *>(realloc(chunk.data, chunk.size)))
                chunk.data = smaller;
        client_->receivedBody(chunk);
    }
    if (outcome_ && client_ && !held_ && !headReady_ && !body_.size) {
        const Outcome outcome = std::move(*outcome_);
        outcome_.reset();
        std::exchange(client_, nullptr)->ended(outcome);
    }
}

}  // namespace http
