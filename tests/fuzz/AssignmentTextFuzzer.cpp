// Assignment texts: whatever is read is in the text, and short texts are read as the regular expression that
// defines them reads them.

#include "registration/AssignmentText.h"
#include "tests/fuzz/Require.h"
#include "tests/registration/AssignmentExpression.h"

#include <cstddef>
#include <cstdint>

namespace {

constexpr int kShort = 200; ///< reading by expression takes the square of the length

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
