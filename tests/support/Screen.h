#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// The screen of a terminal, as far as line editing needs it. An unknown escape sequence leaves its characters on the
/// screen, so that the test fails.
class Screen
{
public:
    Screen(size_t rows, size_t columns);

    void Feed(std::string_view bytes);

    /// Changes the width. Lines are not wrapped again, as on most terminals.
    void Resize(size_t rows, size_t columns);

    /// All lines without spaces at their ends, beginning with those that have scrolled out.
    std::vector<std::string> Lines() const;

    /// All lines in one text. A line that was wrapped continues without a line break.
    std::string Text() const;

    size_t CursorColumn() const
    {
        return m_column;
    }

private:
    struct Row
    {
        std::vector<std::string> cells;
        bool goesOn = false; ///< in the next row
    };

    Row EmptyRow() const
    {
        return {std::vector<std::string>(m_columns, " ")};
    }

    static std::string Text(const Row& row);
    std::vector<Row> Rows() const;

    void Put(const std::string& character);
    void NewLine();
    void Control(char character);
    void Escape(std::string_view parameters, char command);
    void Erase(size_t row, size_t from, size_t to);

    size_t m_rows;
    size_t m_columns;
    std::vector<Row> m_scrolled;
    std::vector<Row> m_lines;
    size_t m_row = 0;
    size_t m_column = 0;
    bool m_mustWrap = false; ///< the last column has a character, so the next one begins a new line
    std::string m_pending;   ///< the beginning of a character or of an escape sequence
};
