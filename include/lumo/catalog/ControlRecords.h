#ifndef LUMO_CATALOG_CONTROLRECORDS_H
#define LUMO_CATALOG_CONTROLRECORDS_H

#include "lumo/catalog/CoordSetting.h"

/// Control files and their points: plain values, copied whole. Texts are NUL-terminated and in the system
/// code page (lumo/components/platform/CodePage.h); one takes at most two bytes less than its array, and a
/// longer one leaves the array as it was. Keys of 0xFFFFFFFF mean none. What a textN, valueN or countN says
/// is settled between the centre and the application.
///
/// `presence` has a bit for each optional number, in their order, bit 0 the lowest. A set bit: the field
/// holds what the centre sent. A clear bit: the centre sent nothing, and the field's value has no meaning.

/// A control file: what its points have in common.
struct tagCtrlFileTable
{
    unsigned int dqConID;    ///< key of the control file
    unsigned int mainFileID; ///< key of the main file in the storage catalogue
    char ctrlFileName[256];
    char text1[256];
    char text2[256];
    char text3[64];
    char text4[64];
    char text5[64];
    char text6[32];
    char text7[32];
    char text8[128];
    char text9[64];
    unsigned short presence;
    double value1;
    tagCoordSetting coord;
};

/// A control point.
struct tagCtrlPointTable
{
    const tagCtrlFileTable* ctrlFile; ///< the application's own; the library sets it to null
    unsigned int pointID;             ///< key of the point
    unsigned int dqConID;             ///< key of its control file
    char conNumber[32];               ///< point number
    char pointText[512];
    unsigned short presence; ///< bits 0 to 2 for the coordinates
    double pointX;           ///< first coordinate
    double pointY;           ///< second coordinate
    double pointZ;           ///< third coordinate
};

#endif
