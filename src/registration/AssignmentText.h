#ifndef LUMO_REGISTRATION_ASSIGNMENTTEXT_H
#define LUMO_REGISTRATION_ASSIGNMENTTEXT_H

#include <QMap>
#include <QString>

/// The text that registers a record: pieces key='value' with single commas between them. Nothing is
/// trimmed, and a value can't hold a comma.
namespace assignmenttext {

/// Puts the values of `text` by their keys into `values`; the last assignment of a key counts. False when a
/// piece has another form; an empty piece has.
///
/// A piece is what the regular expression (.*)='(.*)' finds in it: the key runs to the last =' that a
/// quote follows, the value from there to the piece's last quote.
bool parse(const QString& text, QMap<QString, QString>& values);

} // namespace assignmenttext

#endif
