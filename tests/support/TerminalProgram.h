#pragma once

#include "tests/support/Screen.h"

#include <functional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <termios.h>
#include <vector>

/// `onlinehost` on a terminal of its own, with somebody who types and looks.
class TerminalProgram
{
public:
    explicit TerminalProgram(const std::vector<std::string>& arguments, size_t rows = 24, size_t columns = 80);
    ~TerminalProgram();
    TerminalProgram(const TerminalProgram&) = delete;
    TerminalProgram& operator=(const TerminalProgram&) = delete;

    void Type(std::string_view keys);

    /// Looks until the screen is as wanted. False when that takes too long.
    bool See(const std::function<bool(const Screen&)>& isWanted);

    /// Until the text is there.
    bool See(const std::string& text);

    /// Until the last line is this.
    bool SeeLastLine(const std::string& line);

    void Resize(size_t rows, size_t columns);
    void Signal(int signal);

    /// Waits until it has stopped like a job.
    bool WaitForStop();

    /// Waits for its end and returns the exit code; -1 when it was ended by a signal.
    int WaitForEnd();

    /// The modes of the terminal that the program has set.
    termios Modes() const;

    const Screen& Now() const
    {
        return m_screen;
    }

private:
    bool ReadSome();

    Screen m_screen;
    int m_terminal = -1;
    pid_t m_process = -1;
};

inline constexpr char kTab[] = "\t";
inline constexpr char kEnter[] = "\r";
inline constexpr char kUp[] = "\x1b[A";
inline constexpr char kCtrlA[] = "\x01";
inline constexpr char kCtrlC[] = "\x03";
inline constexpr char kCtrlD[] = "\x04";
inline constexpr char kCtrlB[] = "\x02";
inline constexpr char kCtrlR[] = "\x12";
inline constexpr char kCtrlU[] = "\x15";
inline constexpr char kCtrlW[] = "\x17";
inline constexpr char kBackspace[] = "\x7f";
inline constexpr char kCtrlZ[] = "\x1a";
