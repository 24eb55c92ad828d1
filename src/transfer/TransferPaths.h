#ifndef LUMO_TRANSFER_TRANSFERPATHS_H
#define LUMO_TRANSFER_TRANSFERPATHS_H

#include <QString>

/// The paths of transfers: "/" separates, here and on the storage boxes.
namespace transferpaths {

/// With "/" for "\": the interface takes both on every system, QDir::fromNativeSeparators on one.
inline QString withSlashes(QString path)
{
    return path.replace(QLatin1Char('\\'), QLatin1Char('/'));
}

inline QString withoutTrailingSlash(QString path)
{
    if (path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path;
}

/// What follows the last "/".
inline QString lastName(const QString& path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

/// The place of `name` in the folder `dir`. QDir would take a name that begins with ":" for a path of its
/// own.
inline QString joined(const QString& dir, const QString& name)
{
    return dir.endsWith(QLatin1Char('/')) ? dir + name : dir + QLatin1Char('/') + name;
}

/// The local folder as the head of a path; the empty text is the working folder.
inline QString localFolder(const QString& dir)
{
    return dir.isEmpty() ? QString(QLatin1Char('.')) : dir;
}

/// Whether `name`, which comes from the centre, stays within the folder that it is put into.
inline bool isSafeName(const QString& name)
{
    return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..") &&
           !name.contains(QLatin1Char('/')) && !name.contains(QChar(0));
}

} // namespace transferpaths

#endif
