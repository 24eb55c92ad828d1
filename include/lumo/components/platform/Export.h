#ifndef LUMO_COMPONENTS_PLATFORM_EXPORT_H
#define LUMO_COMPONENTS_PLATFORM_EXPORT_H

/// Marks what a shared library of this project shows; everything else is hidden.
#define LUMO_EXPORT __attribute__((visibility("default")))

#endif
