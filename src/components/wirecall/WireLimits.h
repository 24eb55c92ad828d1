#ifndef LUMO_WIRECALL_WIRELIMITS_H
#define LUMO_WIRECALL_WIRELIMITS_H

namespace wirecall {

/// The largest message, in bytes. A page of 10000 wide records is larger than gRPC's default of 4 MiB.
constexpr int kLargestMessage = 256 * 1024 * 1024;

/// The flow control window of a call, in bytes, fixed on both sides. With gRPC's own probing, an answer of
/// 40 MiB was measured to take 10 s.
constexpr int kFlowControlWindow = 8 * 1024 * 1024;

/// The largest frame of HTTP/2, in bytes. The default of 16 KiB needs many frames for a chunk of a file.
constexpr int kLargestFrame = 1024 * 1024;

} // namespace wirecall

#endif
