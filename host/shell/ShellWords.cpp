#include "host/shell/ShellWords.h"

#include "onlinehost/Error.h"

#include <algorithm>
#include <charconv>

namespace host
{

using namespace onlinehost;

namespace
{

bool IsBlank(char character)
{
    return character == ' ' || character == '\t';
}

class Scanner
{
public:
    explicit Scanner(std::string_view line) : m_rest(line) {}

    enum class Ending
    {
        BetweenWords,
        InWord,
        InQuotes, ///< or after a backslash
        InComment,
    };

    Ending Run()
    {
        while (SkipBlanks(), !m_rest.empty())
        {
            if (m_rest.front() == '#')
            {
                return Ending::InComment;
            }
            m_words.emplace_back();
            if (!ReadWord())
            {
                return Ending::InQuotes;
            }
            if (m_rest.empty())
            {
                return Ending::InWord;
            }
        }
        return Ending::BetweenWords;
    }

    std::vector<std::string> TakeWords()
    {
        return std::move(m_words);
    }

private:
    void SkipBlanks()
    {
        while (!m_rest.empty() && IsBlank(m_rest.front()))
        {
            m_rest.remove_prefix(1);
        }
    }

    char Next()
    {
        const char next = m_rest.front();
        m_rest.remove_prefix(1);
        return next;
    }

    /// Returns false when the line ends too early, as do the functions below.
    bool ReadWord()
    {
        while (!m_rest.empty() && !IsBlank(m_rest.front()))
        {
            const char next = Next();
            const bool whole = next == '\''   ? ReadSingleQuoted()
                               : next == '"'  ? ReadDoubleQuoted()
                               : next == '\\' ? ReadAsItIs()
                                              : Append(next);
            if (!whole)
            {
                return false;
            }
        }
        return true;
    }

    bool Append(char character)
    {
        m_words.back() += character;
        return true;
    }

    bool ReadAsItIs()
    {
        return !m_rest.empty() && Append(Next());
    }

    bool ReadSingleQuoted()
    {
        const size_t length = m_rest.find('\'');
        m_words.back() += m_rest.substr(0, length);
        m_rest.remove_prefix(std::min(m_rest.size(), length == m_rest.npos ? length : length + 1));
        return length != m_rest.npos;
    }

    bool ReadDoubleQuoted()
    {
        while (!m_rest.empty())
        {
            const char next = Next();
            if (next == '"')
            {
                return true;
            }
            if (!(next == '\\' ? ReadEscape() : Append(next)))
            {
                return false;
            }
        }
        return false;
    }

    bool ReadEscape()
    {
        if (m_rest.empty())
        {
            return false;
        }
        const char next = Next();
        return next == 'n' ? Append('\n') : next == 't' ? Append('\t') : next == 'x' ? ReadByte() : Append(next);
    }

    bool ReadByte()
    {
        constexpr size_t kDigits = 2;
        unsigned char byte = 0;
        const char* const end = m_rest.data() + std::min(kDigits, m_rest.size());
        const auto [stop, error] = std::from_chars(m_rest.data(), end, byte, 16);
        if (error != std::errc() || stop != m_rest.data() + kDigits)
        {
            return Append('x');
        }
        m_rest.remove_prefix(kDigits);
        return Append(static_cast<char>(byte));
    }

    std::string_view m_rest;
    std::vector<std::string> m_words;
};

} // namespace

std::vector<std::string> SplitShellLine(std::string_view line)
{
    Scanner scanner(line);
    if (scanner.Run() == Scanner::Ending::InQuotes)
    {
        throw Error("the line ends inside quotes or after a backslash");
    }
    std::vector<std::string> words = scanner.TakeWords();
    for (const std::string& word : words)
    {
        // Texts cross the module's boundary as C strings.
        if (word.find('\0') != std::string::npos)
        {
            throw Error("the line holds a NUL byte, which no text can carry");
        }
    }
    return words;
}

ShellLineStart SplitShellLineStart(std::string_view start)
{
    Scanner scanner(start);
    const Scanner::Ending ending = scanner.Run();
    ShellLineStart result;
    result.words = scanner.TakeWords();
    if (ending == Scanner::Ending::InWord)
    {
        result.last = std::move(result.words.back());
        result.words.pop_back();
    }
    result.canComplete = ending == Scanner::Ending::InWord || ending == Scanner::Ending::BetweenWords;
    return result;
}

std::string QuoteShellWord(std::string_view word)
{
    constexpr std::string_view kSpecial = " \t'\"\\#";
    if (!word.empty() && word.find_first_of(kSpecial) == word.npos)
    {
        return std::string(word);
    }
    std::string quoted = "'";
    for (const char character : word)
    {
        quoted += character == '\'' ? "'\\''" : std::string(1, character);
    }
    return quoted + "'";
}

} // namespace host
