#include "onlinemanager/HttpHelper.h"

#include "commonutil/OrbLogUtil.h"

#include <algorithm>
#include <cstring>
#include <ctime>

namespace onlinemanager
{

namespace
{

constexpr size_t kMessagesPerArray = 10;
constexpr int kQueueCapacity = 5;
constexpr unsigned kWaitStep = 500; // milliseconds

// Processor time of the process, not wall time, on purpose: a suspended client must not give up a request that no
// thread could serve during the suspension. A platform that needs a limit in wall time ends the request with HttpClose.
constexpr int64_t kTimeout = 10'000'000; // clock() ticks

/// Holds a WRWLock for the length of a scope.
template <void (WBASELIB::WRWLock::*Lock)(), void (WBASELIB::WRWLock::*UnLock)()>
class Guard
{
public:
    explicit Guard(WBASELIB::WRWLock& lock) : m_lock(lock)
    {
        (m_lock.*Lock)();
    }
    ~Guard()
    {
        (m_lock.*UnLock)();
    }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

private:
    WBASELIB::WRWLock& m_lock;
};
using ReadGuard = Guard<&WBASELIB::WRWLock::RDLock, &WBASELIB::WRWLock::RDUnLock>;
using WriteGuard = Guard<&WBASELIB::WRWLock::WRLock, &WBASELIB::WRWLock::WRUnLock>;

} // namespace

HttpHelper::HttpHelper() : m_msg_pool(kMessagesPerArray) {}

HttpHelper::~HttpHelper() = default;

bool HttpHelper::Init(IUnknown* http)
{
    if (http == nullptr)
    {
        return false;
    }
    m_http_object = static_cast<IHttpClient*>(http);
    return true;
}

bool HttpHelper::Uninit()
{
    if (m_http_object != nullptr)
    {
        m_http_object->Release();
        m_http_object = nullptr;
    }
    return true;
}

std::string HttpHelper::HttpGet(const char* url)
{
    const std::string urlText(url);
    ORB_LOG("%s, %s", "HttpGet", urlText.c_str());
    return WaitResponse(false, urlText.c_str(), "").c_str();
}

std::string HttpHelper::HttpPost(const char* url, const char* body)
{
    const std::string urlText(url);
    const std::string bodyText(body);
    return WaitResponse(true, urlText.c_str(), bodyText.c_str()).c_str();
}

int32_t HttpHelper::HttpClose(const char* url)
{
    const char* const wanted = url != nullptr ? url : "";
    ORB_LOG("%s, %s", "HttpClose", wanted);
    const ReadGuard guard(m_pending_lock);
    const auto request =
        std::find_if(m_pending_requests.begin(), m_pending_requests.end(),
                     [wanted](const PendingRequest& pending) { return std::strcmp(pending.m_url, wanted) == 0; });
    if (request != m_pending_requests.end())
    {
        Push(*request->m_queue, MSG_CLOSED);
    }
    return 0;
}

void HttpHelper::OnHeaderRespond(unsigned int /*id*/, char* /*data*/, unsigned int /*len*/) {}

void HttpHelper::OnDataRespond(unsigned int /*id*/, char* /*data*/, unsigned int /*len*/) {}

void HttpHelper::OnCompleteRespond(unsigned int id, unsigned int code, char* data, unsigned int len)
{
    ORB_LOG("%s(), id=%u, code=%d", "OnCompleteRespond", id, static_cast<int>(code));
    const WriteGuard guard(m_pending_lock);
    const auto request = std::find_if(m_pending_requests.begin(), m_pending_requests.end(),
                                      [id](const PendingRequest& pending) { return pending.m_id == id; });
    if (request == m_pending_requests.end())
    {
        return;
    }
    const bool hasBody = len != 0 && data != nullptr;
    if (hasBody)
    {
        *request->m_response = data;
    }
    Push(*request->m_queue, hasBody ? MSG_COMPLETED : MSG_COMPLETED_EMPTY);
}

HttpHelper::Text HttpHelper::WaitResponse(bool post, const char* url, const char* body)
{
    if (m_http_object == nullptr)
    {
        return {};
    }
    Queue queue(kQueueCapacity);
    Text response;
    const int64_t start = std::clock();
    const uint32_t id = Send(post, url, body, &queue, &response);
    ORB_LOG("%s(), request sent, id=%u.", "WaitResponse", id);

    const uint32_t end = WaitForEnd(queue, start);
    Remove(&queue);
    queue.Stop();
    queue.Drain([this](Msg* message) { m_msg_pool.Free(message); });
    if (end == MSG_COMPLETED)
    {
        return response;
    }
    if (end != 0)
    {
        ORB_LOG("%s(), msg_id=%u.", "WaitResponse", end);
    }
    return {};
}

/// Holds the lock of the list during the request, on purpose: a completion on another thread then finds the entry. The
/// HTTP object must therefore not complete a request from inside `Request`.
uint32_t HttpHelper::Send(bool post, const char* url, const char* body, Queue* queue, Text* response)
{
    const HttpRequest request{post ? kHttpMethodPost : kHttpMethodGet, 2, 1, 0, 0, 5, url, body};
    const WriteGuard guard(m_pending_lock);
    const uint32_t id = m_http_object->Request(&request, this, &m_text);
    m_pending_requests.push_back({url, id, queue, response});
    return id;
}

/// Returns the type of the message that ended the wait, 0 when the wait timed out.
uint32_t HttpHelper::WaitForEnd(Queue& queue, int64_t start)
{
    for (;;)
    {
        if (Msg* const message = queue.Pop(kWaitStep))
        {
            const uint32_t type = message->m_type;
            m_msg_pool.Free(message);
            return type;
        }
        if (std::clock() - start > kTimeout)
        {
            ORB_LOG("%s(), msg is timeout.", "WaitResponse");
            return 0;
        }
    }
}

void HttpHelper::Remove(const Queue* queue)
{
    const WriteGuard guard(m_pending_lock);
    m_pending_requests.remove_if([queue](const PendingRequest& pending) { return pending.m_queue == queue; });
}

/// A full queue drops the message; the pool then does not get its element back, on purpose.
void HttpHelper::Push(Queue& queue, MsgType type)
{
    Msg* const message = m_msg_pool.Alloc();
    message->m_type = type;
    queue.Push(message);
}

} // namespace onlinemanager
