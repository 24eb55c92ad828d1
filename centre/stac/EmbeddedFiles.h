#ifndef LUMO_CENTRE_STAC_EMBEDDEDFILES_H
#define LUMO_CENTRE_STAC_EMBEDDEDFILES_H

#include <map>
#include <string>
#include <string_view>

namespace centre {

/// The texts of this folder that are built into the program, by the names of their files.
const std::map<std::string, std::string_view>& stacFiles();

} // namespace centre

#endif
