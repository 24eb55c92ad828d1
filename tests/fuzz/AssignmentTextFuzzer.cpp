// Assignment texts: whatever is read is in the text, and short texts are read as the regular expression that
// defines them reads them.

#include "registration/AssignmentText.h"
#include "tests/fuzz/Require.h"

#include <QRegExp>
#include <QStringList>

#include <cstddef>
#include <cstdint>

namespace {

constexpr int kShort = 200; ///< QRegExp takes the square of the length

bool readByExpression(const QString& text, QMap<QString, QString>& values)
{
    for (const QString& piece : text.split(",", Qt::KeepEmptyParts, Qt::CaseSensitive)) {
        QRegExp expression("(.*)='(.*)'", Qt::CaseInsensitive);
        if (piece.indexOf(expression, 0) == -1)
            return false;
        values[expression.cap(1)] = expression.cap(2);
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<int>(size));
    QMap<QString, QString> values;
    const bool good = assignmenttext::parse(text, values);
    for (auto value = values.constBegin(); value != values.constEnd(); ++value)
        require(text.contains(value.key() + "='" + value.value() + "'"));
    if (text.size() <= kShort) {
        QMap<QString, QString> expected;
        require(readByExpression(text, expected) == good && expected == values);
    }
    return 0;
}
