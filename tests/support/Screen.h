#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// What a person sees: the part of a terminal that line editing needs. An escape sequence that it does not know fails the
/// test by what it leaves on the screen.
class Screen
{
public:
    Screen(size_t rows, size_t columns);

    void Feed(std::string_view bytes);

    /// Lines are not wrapped anew, as on most terminals.
    void Resize(size_t rows, size_t columns);

    /// The lines without the spaces at their ends; what scrolled out comes first.
    std::vector<std::string> Lines() const;

    /// All lines in one, where a line that was written beyond its end goes on without a break.
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
    bool m_mustWrap = false; ///< the last column is written: the next character begins a new line
    std::string m_pending;   ///< the beginning of a character or of an escape sequence
};
