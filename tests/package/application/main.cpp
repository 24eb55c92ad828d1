#include <lumo/core/LumoDataMgr.h>
#include <lumo/core/TextEncoding.h>

int main()
{
    const bool fresh = CLumoDataMgr::GetSinglePton()->companyID() == 0xFFFFFFFF;
    const bool converted = convertToUtf8("\xD3\xB0\xCF\xF1") == "\u5F71\u50CF";
    return fresh && converted ? 0 : 1;
}
