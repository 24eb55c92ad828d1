#ifndef LUMO_DIRECTORY_VERSIONRECORDS_H
#define LUMO_DIRECTORY_VERSIONRECORDS_H

#include <string>

/// A version of a program or a module: five texts of any length in the system code page
/// (lumo/components/platform/CodePage.h), whose meaning the centre and the application settle.
struct tagVersionInfo
{
    std::string text1;
    std::string text2;
    std::string text3;
    std::string text4;
    std::string text5;
};

#endif
