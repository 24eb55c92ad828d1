#ifndef LUMO_WIRECALL_WIRELIMITS_H
#define LUMO_WIRECALL_WIRELIMITS_H

namespace wirecall {

/// In bytes. A page of 10000 wide records passes gRPC's default of 4 MiB.
constexpr int kLargestMessage = 256 * 1024 * 1024;

/// The flow control window of a call, in bytes, fixed on both sides: gRPC's own probing for it was
/// measured to hold an answer of 40 MiB for 10 s.
constexpr int kFlowControlWindow = 8 * 1024 * 1024;

/// A frame of HTTP/2, in bytes: the default of 16 KiB makes much of little where chunks of files move.
constexpr int kLargestFrame = 1024 * 1024;

} // namespace wirecall

#endif
