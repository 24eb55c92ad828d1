#ifndef LUMO_CENTRE_IMAGE_CONFINEMENT_H
#define LUMO_CENTRE_IMAGE_CONFINEMENT_H

#include <cstdint>
#include <string>
#include <vector>

namespace centre {

/// Bounds what this process may use: address space in bytes, time, open files; no file can be written.
void limitResources(std::uint64_t memory);

/// Takes from this process, for good, what reading an image does not need: the network, other processes, and
/// all files but those that it has open and those in the folders, which it may read. On a kernel without
/// Landlock those are closed to it, too. Throws Error(Failed) if the kernel can't filter system calls.
void confine(const std::vector<std::string>& readable);

} // namespace centre

#endif
