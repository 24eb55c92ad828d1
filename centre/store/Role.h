#ifndef LUMO_CENTRE_STORE_ROLE_H
#define LUMO_CENTRE_STORE_ROLE_H

#include <optional>
#include <string>

namespace centre {

/// What a user may do with what the user's company owns. Each role may do what those before it may.
enum class Role
{
    Reader, ///< read and download
    Writer, ///< change the catalogue and upload
    Administrator
};

/// Returns "reader", "writer" or "administrator", as the database has it.
std::string nameOf(Role role);

/// Returns the role of that name, or nothing.
std::optional<Role> roleNamed(const std::string& name);

} // namespace centre

#endif
