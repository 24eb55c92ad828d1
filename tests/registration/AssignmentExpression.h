#ifndef LUMO_TESTS_REGISTRATION_ASSIGNMENTEXPRESSION_H
#define LUMO_TESTS_REGISTRATION_ASSIGNMENTEXPRESSION_H

#include <QMap>
#include <QRegExp>
#include <QStringList>

/// Reads an assignment text by the regular expression that defines it, which takes the square of the length.
inline bool readByExpression(const QString& text, QMap<QString, QString>& values)
{
    for (const QString& piece : text.split(",", Qt::KeepEmptyParts, Qt::CaseSensitive)) {
        QRegExp expression("(.*)='(.*)'", Qt::CaseInsensitive);
        if (piece.indexOf(expression, 0) == -1)
            return false;
        values[expression.cap(1)] = expression.cap(2);
    }
    return true;
}

#endif
