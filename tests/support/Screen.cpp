#include "tests/support/Screen.h"

#include <algorithm>

namespace
{

size_t CharacterLength(char lead)
{
    const auto byte = static_cast<unsigned char>(lead);
    return byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

} // namespace

Screen::Screen(size_t rows, size_t columns) : m_rows(rows), m_columns(columns), m_lines(rows, EmptyRow()) {}

void Screen::Feed(std::string_view bytes)
{
    for (const char byte : bytes)
    {
        m_pending += byte;
        if (m_pending[0] == '\x1b')
        {
            if (m_pending.size() > 2 && byte >= '@' && byte <= '~')
            {
                Escape(std::string_view(m_pending).substr(2, m_pending.size() - 3), byte);
                m_pending.clear();
            }
            else if (m_pending.size() == 2 && byte != '[')
            {
                // A sequence without parameters: keypad modes.
                m_pending.clear();
            }
        }
        else if (m_pending.size() == CharacterLength(m_pending[0]))
        {
            const auto first = static_cast<unsigned char>(m_pending[0]);
            first < 0x20 ? Control(m_pending[0]) : Put(m_pending);
            m_pending.clear();
        }
    }
}

void Screen::Put(const std::string& character)
{
    if (m_mustWrap)
    {
        m_lines[m_row].goesOn = true;
        m_column = 0;
        NewLine();
    }
    m_lines[m_row].cells[m_column] = character;
    m_mustWrap = m_column + 1 == m_columns;
    m_column += m_mustWrap ? 0 : 1;
}

void Screen::NewLine()
{
    m_mustWrap = false;
    if (m_row + 1 < m_rows)
    {
        ++m_row;
        return;
    }
    m_scrolled.push_back(std::move(m_lines.front()));
    m_lines.erase(m_lines.begin());
    m_lines.push_back(EmptyRow());
}

void Screen::Control(char character)
{
    if (character == '\n')
    {
        NewLine();
        return;
    }
    if (character == '\r')
    {
        m_column = 0;
    }
    else if (character == '\b')
    {
        m_column -= m_column > 0 ? 1 : 0;
    }
    m_mustWrap = character == '\a' && m_mustWrap;
}

void Screen::Erase(size_t row, size_t from, size_t to)
{
    std::vector<std::string>& cells = m_lines[row].cells;
    std::fill(cells.begin() + static_cast<std::ptrdiff_t>(from), cells.begin() + static_cast<std::ptrdiff_t>(to), " ");
    m_lines[row].goesOn = m_lines[row].goesOn && to < m_columns;
}

void Screen::Escape(std::string_view parameters, char command)
{
    const std::string digits(parameters);
    const size_t given = digits.empty() || digits[0] < '0' || digits[0] > '9' ? 0 : std::stoul(digits);
    const size_t count = std::max<size_t>(given, 1);
    std::vector<std::string>& line = m_lines[m_row].cells;
    const auto cursor = line.begin() + static_cast<std::ptrdiff_t>(m_column);
    const auto shift = static_cast<std::ptrdiff_t>(std::min(count, m_columns - m_column));
    m_mustWrap = m_mustWrap && command == 'm';
    switch (command)
    {
    case 'A':
        m_row -= std::min(m_row, count);
        break;
    case 'B':
        m_row = std::min(m_row + count, m_rows - 1);
        break;
    case 'C':
        m_column = std::min(m_column + count, m_columns - 1);
        break;
    case 'D':
        m_column -= std::min(m_column, count);
        break;
    case 'G':
        m_column = std::min(count, m_columns) - 1;
        break;
    case 'H':
        m_row = 0;
        m_column = 0;
        break;
    case 'J':
        Erase(m_row, given == 2 ? 0 : m_column, m_columns);
        for (size_t row = given == 2 ? 0 : m_row + 1; row < m_rows; ++row)
        {
            Erase(row, 0, m_columns);
        }
        break;
    case 'K':
        Erase(m_row, m_column, m_columns);
        break;
    case 'P':
        line.erase(cursor, cursor + shift);
        line.resize(m_columns, " ");
        break;
    case '@':
        line.insert(cursor, static_cast<size_t>(shift), " ");
        line.resize(m_columns);
        break;
    case 'm':
    case 'h':
    case 'l':
        break;
    default:
        Put("<unknown escape " + digits + command + ">");
        break;
    }
}

void Screen::Resize(size_t rows, size_t columns)
{
    m_rows = rows;
    m_columns = columns;
    m_lines.resize(rows);
    for (Row& line : m_lines)
    {
        line.cells.resize(columns, " ");
    }
    m_row = std::min(m_row, rows - 1);
    m_column = std::min(m_column, columns - 1);
    m_mustWrap = false;
}

std::string Screen::Text(const Row& row)
{
    std::string text;
    for (const std::string& character : row.cells)
    {
        text += character;
    }
    return row.goesOn ? text : text.substr(0, text.find_last_not_of(' ') + 1);
}

std::vector<Screen::Row> Screen::Rows() const
{
    std::vector<Row> rows = m_scrolled;
    rows.insert(rows.end(), m_lines.begin(), m_lines.end());
    while (!rows.empty() && Text(rows.back()).empty())
    {
        rows.pop_back();
    }
    return rows;
}

std::vector<std::string> Screen::Lines() const
{
    std::vector<std::string> lines;
    for (const Row& row : Rows())
    {
        lines.push_back(Text(row));
    }
    return lines;
}

std::string Screen::Text() const
{
    std::string text;
    for (const Row& row : Rows())
    {
        text += Text(row) + (row.goesOn ? "" : "\n");
    }
    return text;
}
