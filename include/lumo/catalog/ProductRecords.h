#ifndef LUMO_CATALOG_PRODUCTRECORDS_H
#define LUMO_CATALOG_PRODUCTRECORDS_H

#include "lumo/catalog/CoordSetting.h"

/// Products made from images: plain values, copied whole. Texts are NUL-terminated and in the system code
/// page (lumo/components/platform/CodePage.h); one takes at most two bytes less than its array, and a longer
/// one leaves the array as it was. Keys of 0xFFFFFFFF mean none. What a textN, valueN or countN says is
/// settled between the centre and the application.
///
/// `presence` has a bit for each valueN and countN, in their order, bit 0 the lowest. A set bit: the field
/// holds what the centre sent. A clear bit: the centre sent nothing, and the field's value has no meaning.

/// A digital elevation model.
struct tagDemTable
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
    char text7[128];
    char text8[128];
    char text9[128];
    char text10[128];
    char text11[128];
    char text12[128];
    char text13[128];
    char text14[128];
    char text15[32];
    char text16[64];
    unsigned int presence;
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
    double value11;
    double value12;
    double value13;
    int count1;
    int count2;
    int count3;
    int count4;
    double value14;
    int count5;
    int count6;
    tagCoordSetting coord;
};

/// A digital surface model.
struct tagDsmTable
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
    char text7[32];
    char text8[32];
    char text9[64];
    unsigned int presence;
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
    int count3;
    int count4;
    int count5;
    tagCoordSetting coord;
};

/// An orthophoto.
struct tagDomTable
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
    char text7[128];
    char text8[128];
    char text9[128];
    char text10[128];
    char text11[128];
    char text12[128];
    char text13[128];
    char text14[128];
    char text15[16];
    char text16[32];
    char text17[32];
    char text18[64];
    unsigned int presence;
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
    int count3;
    int count4;
    int count5;
    int count6;
    int count7;
    int count8;
    tagCoordSetting coord;
};

/// A line map.
struct tagDlgTable
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
    char text7[16];
    char text8[128];
    char text9[128];
    char text10[128];
    char text11[128];
    char text12[128];
    char text13[128];
    char text14[128];
    char text15[128];
    char text16[256];
    char text17[64];
    unsigned int presence;
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
    int count3;
    int count4;
    int count5;
    int count6;
    int count7;
    int count8;
    int count9;
    int count10;
    tagCoordSetting coord;
};

#endif
