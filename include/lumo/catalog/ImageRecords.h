#ifndef LUMO_CATALOG_IMAGERECORDS_H
#define LUMO_CATALOG_IMAGERECORDS_H

#include "lumo/catalog/CoordSetting.h"

/// Images: plain values, copied whole. Texts are NUL-terminated and in the system code page
/// (lumo/components/platform/CodePage.h); one takes at most two bytes less than its array, and a longer one
/// leaves the array as it was. Keys of 0xFFFFFFFF mean none. What a textN, valueN or countN says is settled
/// between the centre and the application.
///
/// `presence` has a bit for each valueN and countN, in their order, bit 0 the lowest. A set bit: the field
/// holds what the centre sent. A clear bit: the centre sent nothing, and the field's value has no meaning.

/// A frame photograph.
struct tagKFImageTable
{
    unsigned int imageID;
    unsigned int mainFileID; ///< key of the main file in the storage catalogue
    char imageName[256];
    char text1[128];
    char text2[128];
    char text3[16];
    char text4[32];
    char text5[16];
    char text6[32];
    char text7[16];
    char text8[64];
    unsigned short presence;
    double value1;
    double value2;
    double value3;
    double value4;
    double value5;
    double value6;
    double value7;
    double value8;
    double value9;
    double value10;
    int count1;
    int count2;
    double value11;
    double value12;
    double value13;
    double value14;
    tagCoordSetting coord;
};

/// A satellite image.
struct tagSatTable
{
    unsigned int imageID;
    unsigned int mainFileID; ///< key of the main file in the storage catalogue
    char imageName[256];
    char text1[128];
    char text2[128];
    char text3[16];
    char text4[32];
    char text5[16];
    char text6[16];
    char text7[64];
    unsigned short presence;
    double value1;
    double value2;
    double value3;
    double value4;
    double value5;
    double value6;
    int count1;
    int count2;
    double value7;
    double value8;
    double value9;
    double value10;
    double value11;
    double value12;
    tagCoordSetting coord;
};

/// An airborne three-line image.
struct tagAdsTable
{
    unsigned int imageID;
    unsigned int mainFileID; ///< key of the main file in the storage catalogue
    char imageName[256];
    char text1[128];
    char text2[128];
    char text3[16];
    char text4[32];
    char text5[16];
    char text6[16];
    char text7[8];
    char text8[64];
    unsigned short presence;
    double value1;
    double value2;
    double value3;
    double value4;
    double value5;
    double value6;
    int count1;
    int count2;
    tagCoordSetting coord;
};

#endif
