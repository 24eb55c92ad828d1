#include "lumo/operations/LumoFilterFile.h"

CLumoFilterFile::CLumoFilterFile() = default;
CLumoFilterFile::CLumoFilterFile(const CLumoFilterFile& other) = default;
CLumoFilterFile& CLumoFilterFile::operator=(const CLumoFilterFile& other) = default;
CLumoFilterFile::~CLumoFilterFile() = default;
