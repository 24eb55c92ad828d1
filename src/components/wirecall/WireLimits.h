#ifndef LUMO_WIRECALL_WIRELIMITS_H
#define LUMO_WIRECALL_WIRELIMITS_H

#include <cstddef>

/// What the other side sends takes at most 256 MiB of a client, and of a process that serves. Messages are
/// not compressed: a compressed one takes its full size before its receiver sees how large that is. See
/// docs/decisions/0009-bounded-messages.md.
namespace wirecall {

constexpr std::size_t kMebibyte = std::size_t(1024) * 1024;

/// The largest message to send, in bytes.
constexpr int kLargestMessage = 256 * kMebibyte;

/// The largest answer, in bytes, and the memory that it may take once it is parsed. A page of 10000 of the
/// widest records, 128 bytes in each field, has 79 MiB and takes 121; a list may come in one answer.
constexpr int kLargestAnswer = 96 * kMebibyte;
constexpr std::size_t kMostAnswerMemory = 208 * kMebibyte;
/// The bytes that arrive from one address, before they are parsed. gRPC takes a message whole before it looks
/// at its size, so it is this that bounds one that is too large.
constexpr std::size_t kMostArriving = 112 * kMebibyte;

/// The same of requests. The largest that anyone has reason for has 8 MiB of files.
constexpr int kLargestRequest = 32 * kMebibyte;
constexpr std::size_t kMostRequestMemory = 64 * kMebibyte;
/// Of all addresses that a process serves together.
constexpr std::size_t kMostArrivingRequests = 128 * kMebibyte;
/// What the calls of one user of a server may hold, in bytes: requests until they are answered, answers until
/// they are sent. What a call holds is counted from kSmallest bytes on; a stream holds kOfStream.
constexpr std::size_t kMostOfUser = 128 * kMebibyte;
constexpr std::size_t kSmallest = kMebibyte / 64;
constexpr std::size_t kOfStream = 2 * kMebibyte;
/// The calls of one connection at once; further ones wait on the caller's side.
constexpr int kMostCalls = 1000;

/// The flow control window of a call, in bytes, fixed on both sides. With gRPC's own probing, an answer of
/// 40 MiB was measured to take 10 s.
constexpr int kFlowControlWindow = 8 * 1024 * 1024;

/// The largest frame of HTTP/2, in bytes. The default of 16 KiB needs many frames for a chunk of a file.
constexpr int kLargestFrame = 1024 * 1024;

/// The largest headers of a call that a server takes, in bytes, names and values together. A token has 43.
constexpr int kLargestHeaders = 8 * 1024;

} // namespace wirecall

#endif
