#ifndef LUMO_CATALOG_QUERYCONDITION_H
#define LUMO_CATALOG_QUERYCONDITION_H

#include <QString>

/// What a search asks for. The centre does the matching; texts, dates included, go to it as they are, and
/// an empty one is sent too. The bounds are sent whatever `useBounds` says.
struct tagQueryCondition
{
    int conditionTag = 0; ///< the application's own; read by nothing
    QString projectName;
    QString dataType;
    QString senType; ///< sensor type
    QString startDate;
    QString endDate;
    bool useBounds = false;
    double boundA = 0;
    double boundB = 0;
    double boundC = 0;
    double boundD = 0;
};

#endif
