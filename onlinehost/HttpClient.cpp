#include "onlinehost/HttpClient.h"

#include "onlinehost/Error.h"

#include <algorithm>
#include <condition_variable>
#include <curl/curl.h>
#include <limits>
#include <map>
#include <mutex>
#include <string_view>
#include <strings.h>
#include <thread>
#include <vector>

namespace onlinehost
{

namespace
{

constexpr std::chrono::milliseconds kConnectLimit{10000};

/// Bytes of all header lines of one request: those of redirections, of the answer and of its trailers.
constexpr size_t kLargestHead = size_t{64} << 10;

using EasyHandle = std::unique_ptr<CURL, decltype(&curl_easy_cleanup)>;
using MultiHandle = std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)>;
using HeaderList = std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)>;

unsigned int EventLength(size_t length)
{
    return static_cast<unsigned int>(length);
}

bool IsHttps(const std::string& url)
{
    return strncasecmp(url.c_str(), "https:", 6) == 0;
}

/// One request and the part of its answer that has come.
struct Transfer
{
    uint32_t id = 0;
    uint64_t earlierCancellations = 0; ///< calls of `CancelRequests` before the request
    uint32_t method = 0;
    std::string url;
    std::string body;
    IHttpResponseNotify* notify = nullptr;
    size_t largestBody = 0;

    EasyHandle easy{nullptr, curl_easy_cleanup};
    HeaderList requestHeaders{nullptr, curl_slist_free_all};
    std::vector<std::string> head; ///< lines of the latest answer's head
    size_t headSize = 0;           ///< of all header lines that have come, trailers included
    bool isHeadReported = false;
    std::string answer;
    bool tooLarge = false;
    char reason[CURL_ERROR_SIZE] = "";

    /// Called only once no redirection can follow any more.
    void ReportHead()
    {
        if (isHeadReported)
        {
            return;
        }
        isHeadReported = true;
        for (std::string& line : head)
        {
            notify->OnHeaderRespond(id, line.data(), EventLength(line.size()));
        }
    }

    bool TakeHeadLine(std::string_view line)
    {
        headSize += line.size();
        if (headSize > kLargestHead)
        {
            return false;
        }
        if (isHeadReported)
        {
            return true; // a trailer
        }
        while (!line.empty() && (line.back() == '\r' || line.back() == '\n'))
        {
            line.remove_suffix(1);
        }
        if (line.starts_with("HTTP/"))
        {
            head.clear();
        }
        if (!line.empty())
        {
            head.emplace_back(line);
        }
        return true;
    }

    bool TakeData(char* data, size_t length)
    {
        if (length > largestBody - answer.size())
        {
            tooLarge = true;
            return false;
        }
        ReportHead();
        answer.append(data, length);
        notify->OnDataRespond(id, data, EventLength(length));
        return true;
    }

    std::string Reason(CURLcode result) const
    {
        if (result == CURLE_ABORTED_BY_CALLBACK)
        {
            return "the request was closed";
        }
        if (headSize > kLargestHead)
        {
            return "the header lines of the answer are larger than " + std::to_string(kLargestHead) + " bytes";
        }
        if (tooLarge || result == CURLE_FILESIZE_EXCEEDED)
        {
            return "the answer is larger than " + std::to_string(largestBody) + " bytes";
        }
        return reason[0] != '\0' ? reason : curl_easy_strerror(result);
    }
};

/// The library is written in C, so no exception may leave its callbacks.
template <typename Action>
size_t Guarded(size_t length, Action action) noexcept
{
    try
    {
        return action() ? length : 0;
    }
    catch (...)
    {
        return 0;
    }
}

size_t OnHeadLine(char* data, size_t, size_t length, void* context) noexcept
{
    auto* const transfer = static_cast<Transfer*>(context);
    return Guarded(length, [&] { return transfer->TakeHeadLine({data, length}); });
}

size_t OnData(char* data, size_t, size_t length, void* context) noexcept
{
    auto* const transfer = static_cast<Transfer*>(context);
    return Guarded(length, [&] { return transfer->TakeData(data, length); });
}

void InitLibraryOnce()
{
    static const CURLcode result = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (result != CURLE_OK)
    {
        throw Error(std::string("the HTTP library cannot start: ") + curl_easy_strerror(result));
    }
}

} // namespace

struct HttpClient::State
{
    explicit State(Options given)
        : options(std::move(given)),
          multi((InitLibraryOnce(), curl_multi_init()), curl_multi_cleanup)
    {
        if (multi == nullptr)
        {
            throw Error("the HTTP library cannot start");
        }
    }

    uint32_t Add(std::unique_ptr<Transfer> transfer)
    {
        const std::lock_guard lock(mutex);
        if (++lastId == 0)
        {
            ++lastId;
        }
        const uint32_t id = lastId;
        transfer->id = id;
        transfer->earlierCancellations = cancellations;
        if (transfer->notify != nullptr)
        {
            added.push_back(std::move(transfer));
            ++unfinished;
            if (!thread.joinable())
            {
                thread = std::thread([this] { Run(); });
            }
            curl_multi_wakeup(multi.get());
        }
        return id;
    }

    void Close()
    {
        std::unique_lock lock(mutex);
        closed = true;
        curl_multi_wakeup(multi.get());
        if (thread.get_id() != std::this_thread::get_id())
        {
            finished.wait(lock, [this] { return unfinished == 0; });
        }
    }

    void CancelRequests()
    {
        const std::lock_guard lock(mutex);
        ++cancellations;
        curl_multi_wakeup(multi.get());
    }

    void Stop()
    {
        {
            const std::lock_guard lock(mutex);
            closed = true;
            stopping = true;
            curl_multi_wakeup(multi.get());
        }
        if (thread.joinable())
        {
            thread.join();
        }
    }

    void Run()
    {
        while (TakeAdded())
        {
            int running = 0;
            curl_multi_perform(multi.get(), &running);
            FinishDone();
            // Ends early when a request is added and when a time limit of the library is due.
            curl_multi_poll(multi.get(), nullptr, 0, 60000, nullptr);
        }
    }

    /// Starts the added requests, and completes those that are cancelled; once the client is closed, completes all
    /// requests. False if the thread must end.
    bool TakeAdded()
    {
        std::vector<std::unique_ptr<Transfer>> fresh;
        uint64_t valid = 0;
        {
            const std::lock_guard lock(mutex);
            fresh.swap(added);
            valid = closed ? UINT64_MAX : cancellations;
        }
        const auto isCancelled = [&valid](const Transfer& transfer) { return transfer.earlierCancellations < valid; };
        for (std::unique_ptr<Transfer>& transfer : fresh)
        {
            Transfer& started = *transfer;
            active.emplace(started.id, std::move(transfer));
            const CURLcode result = isCancelled(started) ? CURLE_ABORTED_BY_CALLBACK : Start(started);
            if (result != CURLE_OK)
            {
                Finish(started, result);
            }
        }
        for (auto next = active.begin(); next != active.end();)
        {
            Transfer& transfer = *(next++)->second; // first, because Finish takes the transfer out of the map
            if (isCancelled(transfer))
            {
                Finish(transfer, CURLE_ABORTED_BY_CALLBACK);
            }
        }
        const std::lock_guard lock(mutex);
        return !stopping || unfinished != 0;
    }

    CURLcode Start(Transfer& transfer)
    {
        if (transfer.url.empty() || (transfer.method != kHttpMethodGet && transfer.method != kHttpMethodPost))
        {
            return CURLE_URL_MALFORMAT;
        }
        transfer.easy.reset(curl_easy_init());
        CURL* const easy = transfer.easy.get();
        if (easy == nullptr)
        {
            return CURLE_OUT_OF_MEMORY;
        }
        curl_easy_setopt(easy, CURLOPT_PRIVATE, &transfer);
        curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, transfer.reason);
        curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
        // Without it the end of a request waits for the name resolver, which may take minutes or hang.
        curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
        curl_easy_setopt(easy, CURLOPT_URL, transfer.url.c_str());
        curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
        curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, IsHttps(transfer.url) ? "https" : "http,https");
        curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
        curl_easy_setopt(easy, CURLOPT_MAXREDIRS, options.redirections);
        curl_easy_setopt(easy, CURLOPT_PROXY, "");
        curl_easy_setopt(easy, CURLOPT_USERAGENT, "onlinehost");
        curl_easy_setopt(easy, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
        curl_easy_setopt(easy, CURLOPT_TIMEOUT_MS, static_cast<long>(options.timeLimit.count()));
        curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(kConnectLimit.count()));
        curl_easy_setopt(easy, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(options.largestBody));
        curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, OnHeadLine);
        curl_easy_setopt(easy, CURLOPT_HEADERDATA, &transfer);
        curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, OnData);
        curl_easy_setopt(easy, CURLOPT_WRITEDATA, &transfer);
        if (!options.caFile.empty())
        {
            curl_easy_setopt(easy, CURLOPT_CAINFO, options.caFile.c_str());
            curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr);
        }
        if (transfer.method == kHttpMethodPost)
        {
            transfer.requestHeaders.reset(curl_slist_append(nullptr, "Content-Type: application/json"));
            curl_easy_setopt(easy, CURLOPT_HTTPHEADER, transfer.requestHeaders.get());
            curl_easy_setopt(easy, CURLOPT_POSTFIELDS, transfer.body.c_str());
            curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(transfer.body.size()));
        }
        return curl_multi_add_handle(multi.get(), easy) == CURLM_OK ? CURLE_OK : CURLE_FAILED_INIT;
    }

    void FinishDone()
    {
        int left = 0;
        while (const CURLMsg* message = curl_multi_info_read(multi.get(), &left))
        {
            void* transfer = nullptr;
            curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &transfer);
            Finish(*static_cast<Transfer*>(transfer), message->data.result);
        }
    }

    void Finish(Transfer& transfer, CURLcode result)
    {
        const std::unique_ptr<Transfer> owner = std::move(active.extract(transfer.id).mapped());
        long status = 0;
        if (transfer.easy != nullptr)
        {
            curl_easy_getinfo(transfer.easy.get(), CURLINFO_RESPONSE_CODE, &status);
            curl_multi_remove_handle(multi.get(), transfer.easy.get());
        }
        if (result == CURLE_OK)
        {
            transfer.ReportHead();
            transfer.notify->OnCompleteRespond(transfer.id, static_cast<unsigned int>(status), transfer.answer.data(),
                                               EventLength(transfer.answer.size()));
        }
        else
        {
            if (options.onFailure)
            {
                // Without the query, which may hold a token.
                options.onFailure(transfer.url.substr(0, transfer.url.find('?')) + ": " + transfer.Reason(result));
            }
            transfer.notify->OnCompleteRespond(transfer.id, 0, nullptr, 0);
        }
        const std::lock_guard lock(mutex);
        --unfinished;
        finished.notify_all();
    }

    const Options options;

    std::mutex mutex;
    std::condition_variable finished; ///< signalled when `unfinished` became smaller
    std::vector<std::unique_ptr<Transfer>> added;
    size_t unfinished = 0;
    uint32_t lastId = 0;
    bool closed = false;
    uint64_t cancellations = 0; ///< calls of `CancelRequests`
    bool stopping = false;

    const MultiHandle multi;                              ///< used by the thread only, except to wake it
    std::map<uint32_t, std::unique_ptr<Transfer>> active; ///< used by the thread only
    std::thread thread;
};

HttpClient::HttpClient(Options options) : m_state(std::make_unique<State>(std::move(options))) {}

HttpClient::~HttpClient()
{
    m_state->Stop();
}

void HttpClient::Close()
{
    m_state->Close();
}

void HttpClient::CancelRequests()
{
    m_state->CancelRequests();
}

uint32_t HttpClient::Request(const HttpRequest* request, IHttpResponseNotify* notify, WBASELIB::TStringBase<char>*)
{
    auto transfer = std::make_unique<Transfer>();
    transfer->notify = notify;
    transfer->largestBody = std::min<size_t>(m_state->options.largestBody, std::numeric_limits<unsigned int>::max());
    if (request != nullptr)
    {
        transfer->method = request->method;
        transfer->url = request->url != nullptr ? request->url : "";
        transfer->body = request->body != nullptr ? request->body : "";
    }
    return m_state->Add(std::move(transfer));
}

} // namespace onlinehost
