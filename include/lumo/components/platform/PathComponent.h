#ifndef LUMO_COMPONENTS_PLATFORM_PATHCOMPONENT_H
#define LUMO_COMPONENTS_PLATFORM_PATHCOMPONENT_H

#include <string>

namespace platform {

/// Whether `name` names an entry of the folder that it is put into, and nothing else: it is not empty, ".",
/// or "..", and has no "/" and no NUL. Neither its encoding nor its length is judged.
inline bool isPathComponent(const std::string& name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

} // namespace platform

#endif
