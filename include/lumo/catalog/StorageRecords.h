#ifndef LUMO_CATALOG_STORAGERECORDS_H
#define LUMO_CATALOG_STORAGERECORDS_H

/// Records of the storage catalogue: plain values, copied whole. Texts are NUL-terminated and in the
/// system code page (lumo/components/platform/CodePage.h). An identifier of 0xFFFFFFFF means none. A text
/// field takes at most two bytes less than its size; a longer text leaves the field as it was.

/// A disk: a root on a storage box.
struct tagDiskTable
{
    unsigned int diskID;
    unsigned int refID;
    char kestaCode[128]; ///< code of the storage box that holds the disk
    char diskName[256];  ///< also the name of the disk's top folder, the one with parent 0
    char rootPath[256];  ///< the disk's root on its storage box
};

/// A folder. Disk and parent folder place it; the top folder of a disk has parent 0.
struct tagFolderTable
{
    unsigned int folderID;
    unsigned int diskID;
    unsigned int parentID;
    char folderName[256];
    char shortText[32];
    char longText[64];
};

/// A file; its parent is a folder.
struct tagFileTable
{
    unsigned int fileID;
    unsigned int parentID;
    char fileName[256];
    char shortText[32];
    char longText[64];
};

#endif
