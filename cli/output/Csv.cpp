#include "cli/output/Csv.h"

#include "cli/base/ExitCode.h"

namespace cli {

namespace {

class CsvReader
{
public:
    CsvReader(const std::string& text, const std::string& name) : m_Text(text), m_Name(name)
    {
        static const std::string kByteOrderMark = "\xEF\xBB\xBF";
        m_Place = text.compare(0, kByteOrderMark.size(), kByteOrderMark) == 0 ? kByteOrderMark.size() : 0;
    }

    bool atEnd() const { return m_Place == m_Text.size(); }

    CsvRow row()
    {
        CsvRow row{m_Line, {cell()}};
        while (!atEnd() && m_Text[m_Place] == ',') {
            ++m_Place;
            row.cells.push_back(cell());
        }
        m_Place += lineEnd();
        ++m_Line;
        return row;
    }

    [[noreturn]] void refuse(std::size_t line, const std::string& what) const
    {
        cli::refuse(m_Name + ":" + std::to_string(line) + ": " + what);
    }

private:
    /// The number of bytes of a line end at this position; 0 if there is none.
    std::size_t lineEnd() const
    {
        return m_Text.compare(m_Place, 2, "\r\n") == 0 ? 2 : m_Text.compare(m_Place, 1, "\n") == 0 ? 1 : 0;
    }

    std::string cell() { return !atEnd() && m_Text[m_Place] == '"' ? quotedCell() : bareCell(); }

    std::string bareCell()
    {
        const std::size_t begin = m_Place;
        while (!atEnd() && m_Text[m_Place] != ',' && lineEnd() == 0) {
            if (m_Text[m_Place] == '"') {
                refuse(m_Line,
                       "a quote in a cell that does not begin with one; write \"a \"\"b\"\"\" for a \"b\"");
            }
            ++m_Place;
        }
        return m_Text.substr(begin, m_Place - begin);
    }

    std::string quotedCell()
    {
        const std::size_t line = m_Line;
        std::string cell;
        for (;;) {
            const std::size_t begin = ++m_Place;
            m_Place = m_Text.find('"', begin);
            if (m_Place == std::string::npos)
                refuse(line, "a quoted cell has no end");
            for (std::size_t i = begin; i < m_Place; ++i)
                m_Line += m_Text[i] == '\n' ? 1 : 0;
            cell.append(m_Text, begin, m_Place - begin);
            ++m_Place;
            if (atEnd() || m_Text[m_Place] != '"')
                break;
            cell += '"';
        }
        if (!atEnd() && m_Text[m_Place] != ',' && lineEnd() == 0)
            refuse(m_Line, "text after the quote that ends a cell");
        return cell;
    }

    const std::string& m_Text;
    const std::string& m_Name;
    std::size_t m_Place = 0;
    std::size_t m_Line = 1;
};

} // namespace

std::vector<CsvRow> parseCsv(const std::string& text, const std::string& name)
{
    CsvReader reader(text, name);
    std::vector<CsvRow> rows;
    while (!reader.atEnd()) {
        CsvRow row = reader.row();
        if (row.cells == std::vector<std::string>{""})
            continue;
        if (!rows.empty() && row.cells.size() != rows.front().cells.size()) {
            reader.refuse(row.line, std::to_string(row.cells.size()) + " cells, but the header has " +
                                        std::to_string(rows.front().cells.size()));
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

std::string csvCell(const std::string& text)
{
    if (text.find_first_of("\",\r\n") == std::string::npos)
        return text;
    std::string cell = "\"";
    for (const char byte : text)
        cell.append(byte == '"' ? 2 : 1, byte);
    return cell + "\"";
}

} // namespace cli
