#include "lumo/core/CStringCodec.h"

#include "lumo/components/platform/CodePage.h"

#include <QTextCodec>

#include <atomic>
#include <cstring>

namespace {

std::atomic<QTextCodec*> chosenCodec{nullptr};

} // namespace

void CLumoCStringCodec::setCodec(QTextCodec* codec)
{
    chosenCodec = codec;
}

QString CLumoCStringCodec::fromAscii(const char* text)
{
    if (text == nullptr)
        return {};
    if (const QTextCodec* codec = chosenCodec)
        return codec->toUnicode(text);
    const std::size_t length = std::strlen(text);
    QString result(static_cast<int>(length), Qt::Uninitialized); // a byte gives at most one unit
    const std::size_t units = platform::toUtf16(platform::systemCodePage(), text, length,
                                                reinterpret_cast<char16_t*>(result.data()),
                                                static_cast<std::size_t>(result.size()));
    result.truncate(static_cast<int>(units));
    return result;
}

std::string CLumoCStringCodec::toStdString(const QString& text)
{
    if (const QTextCodec* codec = chosenCodec)
        return codec->fromUnicode(text).toStdString();
    const unsigned int codePage = platform::systemCodePage();
    const auto* units = reinterpret_cast<const char16_t*>(text.utf16());
    const auto length = static_cast<std::size_t>(text.size());
    std::string result(3 * length, '\0'); // the longest is a unit of three bytes in UTF-8
    result.resize(platform::fromUtf16(codePage, units, length, result.data(), result.size()));
    return result;
}
