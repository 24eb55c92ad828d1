#ifndef LUMO_CENTRE_CONTENT_RECORDLINEREADER_H
#define LUMO_CENTRE_CONTENT_RECORDLINEREADER_H

#include "centre/store/RecordWriter.h"

#include <memory>
#include <string>
#include <string_view>

namespace centre {

/// Reads lines of records, a JSON object each. Used again for each line, so that memory is taken once.
class RecordLineReader
{
public:
    RecordLineReader();
    ~RecordLineReader();

    /// Reads one line. Throws Error(Failed) for a line that is not an object of texts, numbers and `marks`, a
    /// list of numbers. Bytes of any kind are safe.
    void read(std::string_view line);

    /// The text of the key `kind` in the line that was read last; empty without one.
    const std::string& kind() const;
    /// All other keys of that line, in their order, without those whose value is null.
    const RecordTexts& texts() const;

private:
    class LineHandler;
    std::unique_ptr<LineHandler> m_Handler;
};

} // namespace centre

#endif
