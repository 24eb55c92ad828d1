#include "catalog/FieldRules.h"
#include "ledger_storage.pb.h"
#include "lumo/core/LumoDataMgr.h"

using fieldrules::key;
using fieldrules::text;

void CLumoDataMgr::getDiskFromBean(const ledgerserver::DataAddressBean& bean, tagDiskTable& disk)
{
    key(disk.diskID, LUMO_FIELD(id));
    key(disk.refID, LUMO_FIELD(ref_id));
    text(disk.kestaCode, LUMO_FIELD(kesta_code));
    text(disk.diskName, LUMO_FIELD(name));
    text(disk.rootPath, LUMO_FIELD(root_path));
}

void CLumoDataMgr::getFolderFromBean(const ledgerserver::SrcTableBean& bean, tagFolderTable& folder)
{
    key(folder.folderID, LUMO_FIELD(id));
    key(folder.diskID, LUMO_FIELD(disk_id));
    key(folder.parentID, LUMO_FIELD(parent_id));
    text(folder.folderName, LUMO_FIELD(name));
    text(folder.shortText, LUMO_FIELD(short_text));
    text(folder.longText, LUMO_FIELD(long_text));
}

void CLumoDataMgr::getFileFromBean(const ledgerserver::FileTableBean& bean, tagFileTable& file)
{
    key(file.fileID, LUMO_FIELD(id));
    key(file.parentID, LUMO_FIELD(parent_id));
    text(file.fileName, LUMO_FIELD(name));
    text(file.shortText, LUMO_FIELD(short_text));
    text(file.longText, LUMO_FIELD(long_text));
}
