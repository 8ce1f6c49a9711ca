#pragma once

#include "tests/support/Screen.h"

#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <termios.h>
#include <vector>

/// `onlinehost` on a terminal, with operations to type and to read the screen.
class TerminalProgram
{
public:
    explicit TerminalProgram(const std::vector<std::string>& arguments, size_t rows = 24, size_t columns = 80);
    ~TerminalProgram();
    TerminalProgram(const TerminalProgram&) = delete;
    TerminalProgram& operator=(const TerminalProgram&) = delete;

    void Type(std::string_view keys);

    /// Reads until the screen is as wanted; false if that takes too long.
    bool See(const std::function<bool(const Screen&)>& isWanted);

    /// Waits until the screen contains the text.
    bool See(const std::string& text);

    /// Waits until this is the last line.
    bool SeeLastLine(const std::string& line);

    void Resize(size_t rows, size_t columns);
    void Signal(int signal);

    /// Waits until the program is stopped by job control.
    bool WaitForStop();

    /// Waits for the end of the program and returns its exit code; -1 if a signal ended it. Kills the program when it takes too
    /// long.
    int WaitForEnd();

    /// The modes of the terminal that the program has set.
    termios Modes() const;

    /// The modes of the terminal before the program started.
    const termios& FormerModes() const
    {
        return m_formerModes;
    }

    const Screen& Now() const
    {
        return m_screen;
    }

private:
    bool WaitForOutput(std::chrono::steady_clock::time_point deadline);
    bool ReadSome();

    Screen m_screen;
    int m_terminal = -1;
    termios m_formerModes{};
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
