#include "registration/AssignmentText.h"

#include <QVector>

namespace assignmenttext {

namespace {

/// Parsed by hand in linear time: QRegExp takes the square of a piece's length, hours for one of many quotes.
bool parsePiece(const QStringRef& piece, QMap<QString, QString>& values)
{
    const int end = piece.lastIndexOf(QLatin1Char('\''));
    const int equals = end < 2 ? -1 : piece.left(end).lastIndexOf(QLatin1String("='"));
    if (equals < 0)
        return false;
    const int value = equals + 2;
    values.insert(piece.left(equals).toString(), piece.mid(value, end - value).toString());
    return true;
}

} // namespace

bool parse(const QString& text, QMap<QString, QString>& values)
{
    for (const QStringRef& piece : text.splitRef(QLatin1Char(','), Qt::KeepEmptyParts))
        if (!parsePiece(piece, values))
            return false;
    return true;
}

} // namespace assignmenttext
