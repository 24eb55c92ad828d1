#include "lumo/core/LumoDataMgr.h"

#include <QFile>
#include <QSettings>

bool CLumoDataMgr::pathConvertParam()
{
    QString fileName = QStringLiteral("./convert.cfg");
    if (!QFile::exists(fileName))
        fileName = QStringLiteral("../convert.cfg");
    if (!QFile::exists(fileName))
        return false;
    const QSettings settings(fileName, QSettings::IniFormat);
    m_ConvertFrom = settings.value(QStringLiteral("ConvertParam/from")).toString();
    m_ConvertTo = settings.value(QStringLiteral("ConvertParam/to")).toString();
    return !m_ConvertFrom.isEmpty() && !m_ConvertTo.isEmpty();
}
