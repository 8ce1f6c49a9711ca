#include "checks/RecordingHost.h"

#include "onlinehost/Text.h"
#include "onlinehost/WideFormat.h"

#include <cstdio>
#include <optional>
#include <sstream>
#include <stdexcept>

namespace checks
{

namespace
{

std::string Format(const char* format, va_list arguments)
{
    va_list copy;
    va_copy(copy, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    if (length < 0)
    {
        return "unreadable format";
    }
    std::string text(static_cast<size_t>(length) + 1, '\0');
    std::vsnprintf(text.data(), text.size(), format, arguments);
    text.pop_back();
    return text;
}

/// The text with "<pointer>" in place of each address. An address has more digits than a result code.
std::string WithoutAddresses(std::string text)
{
    constexpr size_t kShortestAddress = 9;
    for (size_t position = 0; (position = text.find("0x", position)) != std::string::npos; ++position)
    {
        const size_t end = std::min(text.find_first_not_of("0123456789abcdef", position + 2), text.size());
        if (end - position - 2 >= kShortestAddress)
        {
            text.replace(position, end - position, "<pointer>");
        }
    }
    return text;
}

class RecordingMessage final : public ILogMessage
{
public:
    RecordingMessage(Journal& journal, RecordingLogMgr& manager, int32_t level, const char* file, int32_t line)
        : m_journal(journal),
          m_manager(manager),
          m_level(level),
          m_file(file),
          m_line(line)
    {
        ++m_manager.openMessages;
    }

    void Reserved0() override
    {
        m_journal.Add("message.Reserved0()");
    }

    uint32_t Release() override
    {
        if (m_manager.throwsInRelease)
        {
            throw std::runtime_error("the message cannot be committed");
        }
        if (m_manager.recordsCalls)
        {
            m_journal.Add("message.Release()");
        }
        m_journal.Add("log ", m_file, m_level == 2 ? "" : " at level " + std::to_string(m_level),
                      m_line > 0 ? "" : " without a line number",
                      m_fillings == 1 ? "" : " filled " + std::to_string(m_fillings) + " times", ": ",
                      WithoutAddresses(m_text));
        --m_manager.openMessages;
        delete this;
        return 0;
    }

    void Append(const char* format, va_list arguments) override
    {
        Take("message.Append(", format);
        m_text += Format(format, arguments);
    }

    void AppendWide(const wchar_t* format, va_list arguments) override
    {
        Take("message.AppendWide(", onlinehost::ToUtf8(format));
        m_text += onlinehost::FormatWide(format, arguments);
    }

private:
    void Take(const char* call, const std::string& format)
    {
        ++m_fillings;
        if (m_manager.recordsCalls)
        {
            m_journal.Add(call, '"', format, "\")");
        }
        if (m_manager.throwsInAppend)
        {
            throw std::runtime_error("no room for the message");
        }
    }

    Journal& m_journal;
    RecordingLogMgr& m_manager;
    const int32_t m_level;
    const std::string m_file;
    const int32_t m_line;
    std::string m_text;
    int m_fillings = 0;
};

} // namespace

int32_t RecordingLogMgr::GetLoggerLevel(int64_t loggerId)
{
    if (recordsCalls)
    {
        Record("GetLoggerLevel(", loggerId, ")");
    }
    if (loggerId <= 0 || loggerId > lastLoggerId)
    {
        wrongLoggerId = loggerId;
    }
    Play("GetLoggerLevel");
    return level;
}

ILogMessage* RecordingLogMgr::CreateMessage(int64_t loggerId, int32_t messageLevel, const char* file, int32_t line)
{
    if (recordsCalls)
    {
        Record("CreateMessage(", loggerId, ", ", messageLevel, ", ", Quoted(file), ")");
    }
    return refusesMessages ? nullptr : new RecordingMessage(m_journal, *this, messageLevel, file, line);
}

uint32_t RecordingLogCenter::Release()
{
    const uint32_t count = RecordingUnknown::Release();
    return isGoneAfterRelease ? 0 : count;
}

ILogMgr* RecordingLogCenter::GetLogMgr()
{
    Record("GetLogMgr()");
    return &manager;
}

int64_t RecordingLogCenter::OpenLogger(const char* name, int32_t mode, int32_t option1, int32_t option2)
{
    const int64_t id = refusesLoggers ? 0 : ++manager.lastLoggerId;
    Record("OpenLogger(", Quoted(name), ", ", mode, ", ", option1, ", ", option2, ") -> ", id);
    return id;
}

HRESULT RecordingLogCenter::CloseLogger(int64_t loggerId)
{
    Record("CloseLogger(", loggerId, ")");
    return Play("CloseLogger");
}

HRESULT RecordingLogCenter::AddLogWriter(const char* name, Quenda::ILogWriter* writer)
{
    Record("AddLogWriter(", Quoted(name), writer == nullptr ? ", null)" : ", writer)");
    return Play("AddLogWriter");
}

HRESULT RecordingLogCenter::RemoveLogWriter(const char* name, Quenda::ILogWriter* writer)
{
    Record("RemoveLogWriter(", Quoted(name), writer == nullptr ? ", null)" : ", writer)");
    return Play("RemoveLogWriter");
}

HRESULT RecordingLogAllocator::CreateLog(const wchar_t* name, int32_t level, int32_t mode, IWLog** out)
{
    std::ostringstream call;
    call << "CreateLog(\"" << onlinehost::ToUtf8(name) << "\", " << level << ", " << mode << ")";
    return HandOutLog(call.str(), "CreateLog", out);
}

HRESULT RecordingLogAllocator::CreateLog2(const wchar_t* name, int32_t level, int32_t mode, BOOL encrypt, IWLog** out)
{
    std::ostringstream call;
    call << "CreateLog2(\"" << onlinehost::ToUtf8(name) << "\", " << level << ", " << mode << ", " << encrypt << ")";
    return HandOutLog(call.str(), "CreateLog2", out);
}

HRESULT RecordingLogAllocator::HandOutLog(const std::string& call, const char* operation, IWLog** out)
{
    const HRESULT result = Play(operation);
    if (result < 0)
    {
        Record(call);
        return result;
    }
    logs.push_back(std::make_unique<RecordingLog>(m_journal, "log" + std::to_string(logs.size() + 1)));
    Record(call, " -> ", logs.back()->Name());
    *out = logs.back().get();
    return result;
}

uint32_t RecordingHttp::Request(const HttpRequest* request, IHttpResponseNotify* notify,
                                WBASELIB::TStringBase<char>* text)
{
    const std::string url = request->url;
    uint32_t id = 0;
    std::optional<ScriptedAnswer> answer;
    {
        const std::lock_guard guard(m_mutex);
        id = ++m_lastId;
        m_notifies[id] = notify;
        if (const auto found = m_answers.find(url); found != m_answers.end())
        {
            answer = found->second;
        }
    }
    Record("Request(", request->method, ", ", request->constant2, ", ", request->constant1, ", ", request->zero1, ", ",
           request->zero2, ", ", request->constant5, ", ", Quoted(request->url), ", ", Quoted(request->body), ", ",
           text == nullptr ? "null" : Quoted(text->c_str()), ") -> ", id);
    Play("Request");
    if (answer)
    {
        thread.Post(
            [this, id, answer = *answer]
            {
                SendPieces(id);
                Complete(id, answer.code, answer.body);
            });
    }
    return id;
}

void RecordingHttp::Complete(uint32_t id, unsigned int code, std::string body)
{
    thread.Run([&]
               { FindNotify(id)->OnCompleteRespond(id, code, body.data(), static_cast<unsigned int>(body.size())); });
}

void RecordingHttp::CompleteWithNull(uint32_t id, unsigned int code, unsigned int length)
{
    thread.Run([&] { FindNotify(id)->OnCompleteRespond(id, code, nullptr, length); });
}

void RecordingHttp::SendPieces(uint32_t id)
{
    std::string header = "Content-Type: text/plain";
    std::string piece = "piece";
    thread.Run(
        [&]
        {
            IHttpResponseNotify* const notify = FindNotify(id);
            notify->OnHeaderRespond(id, header.data(), static_cast<unsigned int>(header.size()));
            notify->OnDataRespond(id, piece.data(), static_cast<unsigned int>(piece.size()));
        });
}

void RecordingHttp::Answer(const std::string& url, unsigned int code, const std::string& body)
{
    const std::lock_guard guard(m_mutex);
    m_answers[url] = {code, body};
}

IHttpResponseNotify* RecordingHttp::FindNotify(uint32_t id)
{
    const std::lock_guard guard(m_mutex);
    const auto found = m_notifies.find(id);
    return found != m_notifies.end() ? found->second : m_notifies.rbegin()->second;
}

HRESULT RecordingFactory::CreateComponent(const CLSID& clsid, const IID& iid, IUnknown* outer, void** out)
{
    Record("CreateComponent(", NameOf(clsid), ", ", NameOf(iid), outer == nullptr ? ", null)" : ", outer)");
    Play("CreateComponent");
    HRESULT result = S_OK;
    if (!creationResults.empty())
    {
        result = creationResults.front();
        creationResults.pop_front();
    }
    if (result >= 0)
    {
        *out = static_cast<avcore::IZolConnection*>(&m_platform.NewConnection());
    }
    return result;
}

HRESULT RecordingFactory::Query(const GUID& iid, void** out)
{
    if (const HRESULT result = Play("QueryInterface " + NameOf(iid)); result < 0)
    {
        *out = nullptr;
        return result;
    }
    if (iid == IID_ILogCenter)
    {
        return HandOut(center, out);
    }
    if (iid == IID_IWLogAllocator)
    {
        return HandOut(allocator, out);
    }
    return RecordingUnknown::Query(iid, out);
}

} // namespace checks
