#ifndef LUMO_CATALOG_COORDSETTING_H
#define LUMO_CATALOG_COORDSETTING_H

/// Coordinate settings of a project, image, product or control file. A number that the centre does not
/// send is 0.0, a code -1. What the numbers and the text say is settled between the centre and the
/// application. A code is recognised from its Chinese text only where the system code page is GBK.
struct tagCoordSetting
{
    int datum;      ///< 0 WGS 84, 1 Beijing 1954, 2 Xi'an 1980, 3 China 2000, 4 user defined, -1 not set
    int projection; ///< 0 geographic, 1 transverse Mercator, 2 Gauss, 3 UTM, 4 Lambert conformal,
                    ///< 5 geocentric Cartesian, -1 not set
    double coordParam1;
    double coordParam2;
    double coordParam3;
    double coordParam4;
    double coordParam5;
    double coordParam6;
    double coordParam7;
    double coordParam8;
    int hemisphere; ///< 0 southern, 1 northern, -1 not set
    char coordText[512];
    double coordExtra1;
    double coordExtra2;
    double coordExtra3;
    double coordExtra4;
    double coordExtra5;
    double coordExtra6;
    double coordExtra7; ///< always equal to coordParam8
};

#endif
