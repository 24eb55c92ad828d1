#ifndef LUMO_CATALOG_PROJECTRECORDS_H
#define LUMO_CATALOG_PROJECTRECORDS_H

#include "lumo/catalog/CoordSetting.h"

/// Data projects and their types: plain values, copied whole. Texts are NUL-terminated and in the system code
/// page (lumo/components/platform/CodePage.h); one takes at most two bytes less than its array, and a longer
/// one leaves the array as it was. Keys of 0xFFFFFFFF mean none. What a textN or typeText says is settled
/// between the centre and the application.

/// A data project, the top unit of the image catalogue.
struct tagDataTable
{
    unsigned int projectID; ///< key; elsewhere also called DataID
    unsigned int companyID; ///< company that owns the project
    char projectName[256];
    char text1[32];
    char text2[32];
    char text3[64];
    char text4[64];
    char text5[64];
    char text6[64];
    char text7[32];
    char text8[32];
    tagCoordSetting coord;
};

/// A data type: one class of data within a project.
struct tagTypeTable
{
    unsigned int typeID;
    unsigned int projectID; ///< project that owns the type
    char dataType[64];      ///< name of the type; decides the kind of its records
    char projectName[256];  ///< name of the project, in the first 64 bytes: 62 at most
    char typeText[32];
};

#endif
