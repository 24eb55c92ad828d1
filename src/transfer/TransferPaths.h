#ifndef LUMO_TRANSFER_TRANSFERPATHS_H
#define LUMO_TRANSFER_TRANSFERPATHS_H

#include <QFileInfo>
#include <QString>

/// The paths of transfers: "/" separates, here and on the storage boxes.
namespace transferpaths {

/// The path with "/" for "\", as QDir::fromNativeSeparators does it on one system only.
inline QString withSlashes(QString path)
{
    return path.replace(QLatin1Char('\\'), QLatin1Char('/'));
}

/// A local path, which may use both. "\" may be part of a name, too: a path of something that is here stays.
inline QString normalizedLocalPath(const QString& path)
{
    return QFileInfo::exists(path) ? path : withSlashes(path);
}

/// A path on a storage box. One from "/" is of a system where "\" is part of names.
inline QString normalizedBoxPath(const QString& path)
{
    return path.startsWith(QLatin1Char('/')) ? path : withSlashes(path);
}

inline QString withoutTrailingSlashes(QString path)
{
    while (path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path;
}

/// A folder on a storage box, without a trailing "/" unless it is the root.
inline QString normalizedBoxFolder(const QString& path)
{
    const QString normalized = normalizedBoxPath(path);
    const QString folder = withoutTrailingSlashes(normalized);
    return folder.isEmpty() ? normalized.left(1) : folder;
}

/// Returns what follows the last "/".
inline QString lastName(const QString& path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

/// The path of `name` in the folder `dir`. As with QDir, an empty `dir` is the folder "."; QDir would take a
/// name that begins with ":" for a path of its own.
inline QString joined(const QString& dir, const QString& name)
{
    if (dir.isEmpty())
        return QLatin1String("./") + name;
    return dir.endsWith(QLatin1Char('/')) ? dir + name : dir + QLatin1Char('/') + name;
}

} // namespace transferpaths

#endif
