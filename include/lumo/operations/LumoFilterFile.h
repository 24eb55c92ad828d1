#ifndef LUMO_OPERATIONS_LUMOFILTERFILE_H
#define LUMO_OPERATIONS_LUMOFILTERFILE_H

#include "lumo/components/platform/Export.h"

#include <QList>
#include <QPair>
#include <QString>

/// An image, described by its files, for the centre to analyse. The application fills it. The centre defines
/// what the numbers mean. To receive one in a slot of another thread, the
/// application registers CLumoFilterFile, or QList<CLumoFilterFile>, with qRegisterMetaType before it
/// connects.
class LUMO_EXPORT CLumoFilterFile
{
public:
    /// A text and an identifier, as of a file.
    typedef QPair<QString, int> Reference;

    CLumoFilterFile();
    CLumoFilterFile(const CLumoFilterFile& other);
    CLumoFilterFile& operator=(const CLumoFilterFile& other);
    virtual ~CLumoFilterFile();

    QString m_ImgName;
    QString m_Sensor;
    int m_FilterKind = 0;
    Reference m_Base; ///< only the identifier is sent
    QList<Reference> m_MainFiles;
    QList<Reference> m_MetaFiles;
    QList<Reference> m_AttachFiles;
    QList<Reference> m_Marks;
};

#endif
