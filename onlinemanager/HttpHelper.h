#pragma once

#include "avcore/IZolHttp.h"
#include "common/frameworksdk/IHttpClient.h"
#include "common/wbaselib/welementallocator.h"
#include "common/wbaselib/wlock.h"
#include "common/wbaselib/wmsgqueue.h"
#include "common/wbaselib/wstringbase.h"

#include <cstdint>
#include <list>
#include <string>

namespace onlinemanager
{

/// Turns the host's asynchronous HTTP object into blocking calls. The session makes and owns it, and lends it to the
/// platform.
///
/// A call blocks until the answer arrives, until `HttpClose` ends it, or until the process has used 10 seconds of
/// processor time since the request. Every failure gives an empty text.
class HttpHelper : public avcore::IZolHttp, public IHttpResponseNotify
{
public:
    using Text = WBASELIB::TStringBase<char>;

    HttpHelper();
    virtual ~HttpHelper();

    HttpHelper(const HttpHelper&) = delete;
    HttpHelper& operator=(const HttpHelper&) = delete;

    /// Keeps the host's HTTP object and takes over one reference of it. False for null.
    bool Init(IUnknown* http);

    /// Releases that reference. Always true.
    bool Uninit();

    std::string HttpGet(const char* url) override;
    std::string HttpPost(const char* url, const char* body) override;
    int32_t HttpClose(const char* url) override;

    void OnHeaderRespond(unsigned int id, char* data, unsigned int len) override;
    void OnDataRespond(unsigned int id, char* data, unsigned int len) override;
    void OnCompleteRespond(unsigned int id, unsigned int code, char* data, unsigned int len) override;

    Text WaitResponse(bool post, const char* url, const char* body);

private:
    enum MsgType : uint32_t
    {
        MSG_COMPLETED = 1,
        MSG_COMPLETED_EMPTY = 2,
        MSG_CLOSED = 3,
    };

    /// The message that ends a waiting call; an element of the pool.
    struct Msg
    {
        uint32_t m_type = 0;
        Msg* m_next = nullptr;
    };
    static_assert(sizeof(Msg) == 16);

    using Queue = WBASELIB::WMsgQueue<Msg>;

    /// One waiting call. What its pointers refer to lives on the stack of that call.
    struct PendingRequest
    {
        const char* m_url;
        uint32_t m_id;
        Queue* m_queue;
        Text* m_response;
    };

    uint32_t Send(bool post, const char* url, const char* body, Queue* queue, Text* response);
    uint32_t WaitForEnd(Queue& queue, int64_t start);
    void Remove(const Queue* queue);
    void Push(Queue& queue, MsgType type);

    IHttpClient* m_http_object = nullptr;
    WBASELIB::WElementAllocator<Msg> m_msg_pool;
    std::list<PendingRequest> m_pending_requests;
    WBASELIB::WRWLock m_pending_lock; ///< guards the list; a thread takes it before the lock of the pool or of a queue
    Text m_text;                      ///< always empty; an argument of the HTTP object's request operation
};

} // namespace onlinemanager
