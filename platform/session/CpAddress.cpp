#include "platform/session/CpAddress.h"

#include "platform/Platform.h"

#include <exception>
#include <optional>
#include <thread>

#include <rapidjson/document.h>

namespace platform
{

namespace
{

/// A close is repeated, because a close that comes before the HTTP object knows the request is lost.
constexpr std::chrono::milliseconds kCloseInterval{20};

constexpr size_t kLongestAddress = 1024;

bool BeginsWith(std::string_view text, std::string_view lowerCasePrefix)
{
    if (text.size() < lowerCasePrefix.size())
    {
        return false;
    }
    for (size_t i = 0; i < lowerCasePrefix.size(); ++i)
    {
        const char lower = text[i] >= 'A' && text[i] <= 'Z' ? static_cast<char>(text[i] - 'A' + 'a') : text[i];
        if (lower != lowerCasePrefix[i])
        {
            return false;
        }
    }
    return true;
}

void AppendParameter(std::string& url, std::string_view name, std::string_view value)
{
    constexpr std::string_view kHexDigits = "0123456789ABCDEF";
    constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
    url += name;
    url += '=';
    for (const char character : value)
    {
        if (kPlain.find(character) != std::string_view::npos)
        {
            url += character;
            continue;
        }
        const auto byte = static_cast<unsigned char>(character);
        url += '%';
        url += kHexDigits[byte >> 4U];
        url += kHexDigits[byte & 0xFU];
    }
}

CpAnswer Failure(HRESULT result, std::string text)
{
    return CpAnswer{result, {}, std::move(text)};
}

CpAnswer ReadDocument(const rapidjson::Document& document)
{
    const auto code = document.FindMember("code");
    if (code == document.MemberEnd() || !code->value.IsInt())
    {
        return Failure(kCpNotUnderstood, "the answer has no number \"code\"");
    }
    if (code->value.GetInt() != 0)
    {
        std::string text = "the server refuses with code " + std::to_string(code->value.GetInt());
        const auto message = document.FindMember("message");
        if (message != document.MemberEnd() && message->value.IsString())
        {
            text += std::string(": ") + message->value.GetString();
        }
        return Failure(kCpRefused, std::move(text));
    }
    const auto address = document.FindMember("address");
    if (address == document.MemberEnd() || !address->value.IsString() || address->value.GetStringLength() == 0 ||
        address->value.GetStringLength() > kLongestAddress)
    {
        return Failure(kCpNotUnderstood, "the answer has no usable text \"address\"");
    }
    return CpAnswer{S_OK, address->value.GetString(), {}};
}

} // namespace

bool IsHttpServer(std::string_view server)
{
    return BeginsWith(server, "http://") || BeginsWith(server, "https://");
}

std::string MakeCpUrl(const CpRequest& request)
{
    std::string url = request.server.substr(0, request.server.find('#'));
    if (url.find('?') == std::string::npos)
    {
        const size_t host = url.find("://") + 3;
        const size_t path = url.find('/', host);
        if (path == std::string::npos)
        {
            url += "/cp";
        }
        else if (path + 1 == url.size())
        {
            url += "cp";
        }
        url += '?';
    }
    else if (url.back() != '?' && url.back() != '&')
    {
        url += '&';
    }
    AppendParameter(url, "appid", request.appId);
    AppendParameter(url, "&companyid", request.companyId);
    AppendParameter(url, "&token", request.token);
    return url;
}

CpAnswer ParseCpAnswer(std::string_view body, size_t longest)
{
    if (body.empty())
    {
        return Failure(kCpNoAnswer, "the server gave no answer");
    }
    if (body.size() > longest)
    {
        return Failure(kCpTooLong, "the answer has " + std::to_string(body.size()) + " bytes, " +
                                       std::to_string(longest) + " are allowed");
    }
    rapidjson::Document document;
    // Without recursion, because the nesting of the answer is limited only by its length.
    document.Parse<rapidjson::kParseIterativeFlag>(body.data(), body.size());
    if (document.HasParseError() || !document.IsObject())
    {
        return Failure(kCpNotUnderstood, "the answer is not a JSON object");
    }
    return ReadDocument(document);
}

CpAnswer HttpFetch::Run(avcore::IZolHttp& http, const CpRequest& request, std::chrono::milliseconds limit,
                        size_t longest)
{
    const std::string url = MakeCpUrl(request);
    const auto deadline = std::chrono::steady_clock::now() + limit;
    std::string body;
    bool inTime = true;
    bool aborted = false;
    {
        std::unique_lock lock(m_mutex);
        if (!m_aborted)
        {
            std::thread asking(
                [this, &http, &url, &body]
                {
                    std::string answer;
                    try
                    {
                        answer = http.HttpGet(url.c_str());
                    }
                    catch (const std::exception&)
                    {
                        // An HTTP object that throws has given no answer.
                        answer.clear();
                    }
                    const std::lock_guard answerLock(m_mutex);
                    body = std::move(answer);
                    m_answered = true;
                    m_changed.notify_all();
                });
            inTime = m_changed.wait_until(lock, deadline, [this] { return m_answered || m_aborted; });
            aborted = m_aborted && !m_answered;
            while (!m_answered)
            {
                lock.unlock();
                http.HttpClose(url.c_str());
                lock.lock();
                m_changed.wait_for(lock, kCloseInterval, [this] { return m_answered; });
            }
            lock.unlock();
            asking.join();
            lock.lock();
        }
        else
        {
            aborted = true;
        }
        m_ended = true;
        m_changed.notify_all();
    }
    if (aborted)
    {
        return Failure(kCpNoAnswer, "the request was closed");
    }
    if (!inTime)
    {
        return Failure(kCpTimeLimit, "no answer within " + std::to_string(limit.count()) + " ms");
    }
    return ParseCpAnswer(body, longest);
}

void HttpFetch::Abort()
{
    const std::lock_guard lock(m_mutex);
    m_aborted = true;
    m_changed.notify_all();
}

void HttpFetch::WaitEnd()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_ended; });
}

void HttpFetch::Abandon()
{
    const std::lock_guard lock(m_mutex);
    m_ended = true;
    m_changed.notify_all();
}

} // namespace platform
