// SPDX-License-Identifier: Apache-2.0
#include "agent/store/http.h"

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <utility>

#include "base/failure.h"
#include "base/text.h"

namespace qvs::fleet {
namespace {

// The limit for one answer, or for one line of a stream.
constexpr size_t kMostBytes = size_t{256} << 20;

struct Easy {
    CURL *handle = curl_easy_init();
    curl_slist *headers = nullptr;
    std::array<char, CURL_ERROR_SIZE> error{};

    Easy() {
        if (handle == nullptr) throw std::bad_alloc();
    }
    ~Easy() {
        curl_easy_cleanup(handle);
        curl_slist_free_all(headers);
    }
    Easy(const Easy &) = delete;
    Easy &operator=(const Easy &) = delete;

    template <typename Value>
    void set(CURLoption option, Value value) {
        const CURLcode code = curl_easy_setopt(handle, option, value);
        if (code != CURLE_OK) fail(Exit::Usage, "TLS and HTTP: {}", curl_easy_strerror(code));
    }
    void setFile(CURLoption option, const std::string &path) {
        if (!path.empty()) set(option, path.c_str());
    }

    void prepare(const Access &access, const std::string &token) {
        set(CURLOPT_ERRORBUFFER, error.data());
        set(CURLOPT_NOSIGNAL, 1L);
        set(CURLOPT_PROTOCOLS_STR, "http,https");
        // Proxy variables of the environment are ignored.
        set(CURLOPT_PROXY, "");
        set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(std::max<int64_t>(access.limit.count() / 2, 1)));
        set(CURLOPT_TCP_KEEPALIVE, 1L);
        set(CURLOPT_TCP_KEEPIDLE, 10L);
        set(CURLOPT_TCP_KEEPINTVL, 5L);
        // Each of the many agents of a fleet has this buffer, so it is small.
        set(CURLOPT_BUFFERSIZE, 4096L);
        setFile(CURLOPT_CAINFO, access.caFile);
        setFile(CURLOPT_SSLCERT, access.certificateFile);
        setFile(CURLOPT_SSLKEY, access.keyFile);
        set(CURLOPT_POST, 1L);
        curl_slist_free_all(std::exchange(headers, nullptr));
        headers = curl_slist_append(headers, "Content-Type: application/json");
        // Without this, libcurl sends "Expect: 100-continue" before a large body, which the gateway does not
        // answer.
        headers = curl_slist_append(headers, "Expect:");
        if (!token.empty()) headers = curl_slist_append(headers, ("Authorization: " + token).c_str());
        set(CURLOPT_HTTPHEADER, headers);
    }
    void setBody(const std::string &body) {
        set(CURLOPT_POSTFIELDS, body.data());
        set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    }
    std::string reason(CURLcode code) const {
        return error[0] != '\0' ? shown(error.data()) : curl_easy_strerror(code);
    }
};

size_t take(const char *data, size_t, size_t size, void *to) {
    auto &text = *static_cast<std::string *>(to);
    if (size > kMostBytes - text.size()) return 0;
    text.append(data, size);
    return size;
}

// TLS takes more memory than the rest of the agent. It is only initialised if it is used.
void initialise(const Access &access) {
    const bool secure = std::ranges::any_of(access.endpoints,
                                            [](const std::string &url) { return url.starts_with("https:"); });
    if (curl_global_init(secure ? CURL_GLOBAL_SSL : CURL_GLOBAL_NOTHING) != CURLE_OK)
        fail(Exit::Failed, "libcurl does not start");
}

}  // namespace

struct Http::Handle : Easy {};

Http::Http(const Access &access) : access_(access) {
    initialise(access);
    handle_ = std::make_unique<Handle>();
}

Http::~Http() = default;

Answer Http::post(const std::string &url, const std::string &body, const std::string &token) {
    Answer answer;
    Easy &easy = *handle_;
    easy.prepare(access_, token);
    easy.set(CURLOPT_TIMEOUT_MS, static_cast<long>(access_.limit.count()));
    easy.set(CURLOPT_WRITEFUNCTION, take);
    easy.set(CURLOPT_WRITEDATA, &answer.body);
    easy.set(CURLOPT_URL, url.c_str());
    easy.setBody(body);
    const CURLcode code = curl_easy_perform(easy.handle);
    if (code != CURLE_OK) fail(Exit::NoAnswer, "{}: {}", shown(url), easy.reason(code));
    curl_easy_getinfo(easy.handle, CURLINFO_RESPONSE_CODE, &answer.status);
    return answer;
}

struct Streams::Stream : Easy {
    std::string body;  // libcurl does not copy it
    std::string received;
};

struct Streams::Multi {
    CURLM *handle = curl_multi_init();
    std::vector<std::unique_ptr<Stream>> streams;

    Multi() {
        if (handle == nullptr) throw std::bad_alloc();
    }
    ~Multi() {
        for (const auto &stream : streams)
            curl_multi_remove_handle(handle, stream->handle);
        streams.clear();
        curl_multi_cleanup(handle);
    }
    Multi(const Multi &) = delete;
    Multi &operator=(const Multi &) = delete;

    // The reason why a stream has ended.
    std::string end() {
        int left = 0;
        while (const CURLMsg *message = curl_multi_info_read(handle, &left)) {
            if (message->msg != CURLMSG_DONE) continue;
            for (const auto &stream : streams)
                if (stream->handle == message->easy_handle)
                    return message->data.result == CURLE_OK ? "the store has ended the stream"
                                                            : stream->reason(message->data.result);
        }
        return {};
    }
};

Streams::Streams(const Access &access) : multi_(std::make_unique<Multi>()), access_(access) {}

Streams::~Streams() = default;

void Streams::open(const std::string &url, std::string body, const std::string &token) {
    auto stream = std::make_unique<Stream>();
    stream->body = std::move(body);
    stream->prepare(access_, token);
    stream->set(CURLOPT_WRITEFUNCTION, take);
    stream->set(CURLOPT_WRITEDATA, &stream->received);
    stream->set(CURLOPT_URL, url.c_str());
    stream->setBody(stream->body);
    if (curl_multi_add_handle(multi_->handle, stream->handle) != CURLM_OK) throw std::bad_alloc();
    multi_->streams.push_back(std::move(stream));
}

std::string Streams::wait(std::span<pollfd> others, std::chrono::milliseconds most,
                          std::vector<Line> &lines) {
    std::vector<curl_waitfd> extra;
    for (const pollfd &other : others)
        extra.push_back({other.fd, CURL_WAIT_POLLIN, 0});
    int running = 0;
    curl_multi_perform(multi_->handle, &running);
    int ready = 0;
    if (running == static_cast<int>(multi_->streams.size())) {
        curl_multi_poll(multi_->handle, extra.data(), static_cast<unsigned>(extra.size()),
                        static_cast<int>(most.count()), &ready);
        for (size_t i = 0; i < others.size(); i++)
            others[i].revents = extra[i].revents != 0 ? POLLIN : 0;
        curl_multi_perform(multi_->handle, &running);
    }
    for (size_t i = 0; i < multi_->streams.size(); i++) {
        std::string &received = multi_->streams[i]->received;
        size_t begin = 0;
        for (size_t end; (end = received.find('\n', begin)) != std::string::npos; begin = end + 1)
            lines.push_back({i, received.substr(begin, end - begin)});
        received.erase(0, begin);
        // The last line can lack its newline: whether an error has one depends on the version of the gateway.
        if (running < static_cast<int>(multi_->streams.size()) && !received.empty())
            lines.push_back({i, std::exchange(received, {})});
    }
    return multi_->end();
}

}  // namespace qvs::fleet
