#include "catalog/FieldRules.h"
#include "ledger_storage.pb.h"
#include "lumo/core/LumoDataMgr.h"

using fieldrules::key;
using fieldrules::text;

void CLumoDataMgr::getDiskFromBean(const ledgerserver::DataAddressBean& bean, tagDiskTable& disk)
{
    key(disk.diskID, FIELD(id));
    key(disk.refID, FIELD(ref_id));
    text(disk.kestaCode, FIELD(kesta_code));
    text(disk.diskName, FIELD(name));
    text(disk.rootPath, FIELD(root_path));
}

void CLumoDataMgr::getFolderFromBean(const ledgerserver::SrcTableBean& bean, tagFolderTable& folder)
{
    key(folder.folderID, FIELD(id));
    key(folder.diskID, FIELD(disk_id));
    key(folder.parentID, FIELD(parent_id));
    text(folder.folderName, FIELD(name));
    text(folder.shortText, FIELD(short_text));
    text(folder.longText, FIELD(long_text));
}

void CLumoDataMgr::getFileFromBean(const ledgerserver::FileTableBean& bean, tagFileTable& file)
{
    key(file.fileID, FIELD(id));
    key(file.parentID, FIELD(parent_id));
    text(file.fileName, FIELD(name));
    text(file.shortText, FIELD(short_text));
    text(file.longText, FIELD(long_text));
}
