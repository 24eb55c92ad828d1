#include "components/platform/Export.h"
#include "core/TextEncoding.h"

#include <lumo/client/Place.h>
#include <lumo/core/LumoDataMgr.h>
#include <lumo/core/TextEncoding.h>

int main()
{
    const bool fresh = CLumoDataMgr::GetSinglePton()->companyID() == 0xFFFFFFFF;
    const bool converted = convertToUtf8("\xD3\xB0\xCF\xF1") == "\u5F71\u50CF";
    const bool placed = lumo::Place("/disk/folder").names().size() == 2;
    const bool undisturbed = kOwnCore + kOwnComponent == 3;
    return fresh && converted && placed && undisturbed ? 0 : 1;
}
