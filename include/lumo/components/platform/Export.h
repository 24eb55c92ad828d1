#ifndef LUMO_COMPONENTS_PLATFORM_EXPORT_H
#define LUMO_COMPONENTS_PLATFORM_EXPORT_H

/// Marks a symbol that a shared library of this project exports; all others are hidden.
#define LUMO_EXPORT __attribute__((visibility("default")))

#endif
