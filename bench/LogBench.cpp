#include "bench/Pairs.h"
#include "commonutil/OrbLogUtil.h"

#include <cstdio>

namespace bench
{

namespace
{

constexpr char kLine[] = "%s(), userid=%s, status=%d, terminal=%s, custom=%s.";

/// A message that formats into its buffer; one object serves all lines.
class Message final : public ILogMessage
{
public:
    void Reserved0() override {}

    uint32_t Release() override
    {
        ++m_lines;
        return 0;
    }

    void Append(const char* format, va_list arguments) override
    {
        std::vsnprintf(m_text, sizeof(m_text), format, arguments);
        benchmark::ClobberMemory();
    }

    void AppendWide(const wchar_t* /*format*/, va_list /*arguments*/) override {}

    int64_t Lines() const
    {
        return m_lines;
    }

private:
    char m_text[Quenda::kMaxLogMessageBufLen];
    int64_t m_lines = 0;
};

class LogManager final : public ILogMgr
{
public:
    explicit LogManager(int32_t level) : m_level(level) {}

    HRESULT QueryInterface(const GUID& /*iid*/, void** /*out*/) override
    {
        return E_NOINTERFACE;
    }
    uint32_t AddRef() override
    {
        return 1;
    }
    uint32_t Release() override
    {
        return 1;
    }
    void Reserved3() override {}
    void Reserved4() override {}
    void Reserved5() override {}
    void Reserved6() override {}
    void Reserved7() override {}
    void Reserved9() override {}

    // Not inlined: the compiler of the module never sees the host's code.
    __attribute__((noinline)) int32_t GetLoggerLevel(int64_t /*loggerId*/) override
    {
        return m_level;
    }

    ILogMessage* CreateMessage(int64_t /*loggerId*/, int32_t /*level*/, const char* /*file*/, int32_t /*line*/) override
    {
        return &m_message;
    }

    int64_t Lines() const
    {
        return m_message.Lines();
    }

private:
    const int32_t m_level;
    Message m_message;
};

/// Writes lines as the module does, with its logger at `level`.
void WriteLines(benchmark::State& state, int32_t level)
{
    LogManager manager(level);
    commonutil::OrbLogUtil::m_model_log_mrg = &manager;
    commonutil::OrbLogUtil::m_logger_id = 1;
    for (auto _ : state)
    {
        ORB_LOG(kLine, "OnUserTerminalStateChanged", "52011", 1, "pc-52011", "in a meeting");
    }
    commonutil::OrbLogUtil::m_model_log_mrg = nullptr;
    commonutil::OrbLogUtil::m_logger_id = 0;
    const int64_t expected = level < int32_t{Quenda::LOG_LEVEL_WARNING} ? state.iterations() : 0;
    if (manager.Lines() != expected)
    {
        state.SkipWithError("wrong number of lines");
    }
}

void SuppressedLine(benchmark::State& state)
{
    WriteLines(state, Quenda::LOG_LEVEL_WARNING);
}

void VirtualCall(benchmark::State& state)
{
    LogManager concrete(Quenda::LOG_LEVEL_WARNING);
    ILogMgr* manager = &concrete;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(manager); // hides the object's class from the compiler
        benchmark::DoNotOptimize(manager->GetLoggerLevel(1));
    }
}

void WrittenLine(benchmark::State& state)
{
    WriteLines(state, Quenda::LOG_LEVEL_TRACE);
}

void Format(char* buffer, size_t size, const char* format, ...) __attribute__((format(printf, 3, 4)));

void Format(char* buffer, size_t size, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(buffer, size, format, arguments);
    va_end(arguments);
}

void BareFormat(benchmark::State& state)
{
    char buffer[Quenda::kMaxLogMessageBufLen];
    for (auto _ : state)
    {
        Format(buffer, sizeof(buffer), kLine, "OnUserTerminalStateChanged", "52011", 1, "pc-52011", "in a meeting");
        benchmark::ClobberMemory();
    }
}

} // namespace

void AddLogBenchmarks()
{
    AddPair("log_suppressed", SuppressedLine, VirtualCall);
    AddPair("log_written", WrittenLine, BareFormat);
}

} // namespace bench
