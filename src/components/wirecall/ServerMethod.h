#ifndef LUMO_WIRECALL_SERVERMETHOD_H
#define LUMO_WIRECALL_SERVERMETHOD_H

#include <google/protobuf/descriptor.h>
#include <google/protobuf/service.h>

#include <atomic>
#include <chrono>
#include <cstdint>

namespace wirecall {

/// A method of a service, and how long it usually takes. Safe from any thread once it is filled.
class ServerMethod
{
public:
    google::protobuf::Service* service = nullptr;
    const google::protobuf::MethodDescriptor* descriptor = nullptr;

    bool isStream() const { return descriptor->client_streaming() || descriptor->server_streaming(); }
    /// Whether it usually takes so long that it runs beside others, even if none is there now.
    bool takesLong() const { return m_UsualTime >= kLongTime; }
    /// The same while others wait.
    bool takesLongForOthers() const { return m_UsualTime >= kLongTimeForOthers; }

    /// Measures a run of the method.
    class Timed
    {
    public:
        explicit Timed(ServerMethod& method) : m_Method(method), m_Begin(Clock::now()) {}
        ~Timed()
        {
            const std::int64_t time = std::chrono::nanoseconds(Clock::now() - m_Begin).count();
            const std::int64_t usual = m_Method.m_UsualTime;
            m_Method.m_UsualTime = usual + (time - usual) / 4; // what another thread measures now may be lost
        }

        Timed(const Timed&) = delete;
        Timed& operator=(const Timed&) = delete;

    private:
        using Clock = std::chrono::steady_clock;

        ServerMethod& m_Method;
        const Clock::time_point m_Begin;
    };

private:
    /// In nanoseconds. To wake another thread costs about as much as the shorter time.
    static constexpr std::int64_t kLongTime = 250000;
    static constexpr std::int64_t kLongTimeForOthers = 30000;

    std::atomic<std::int64_t> m_UsualTime{0}; ///< of the latest runs most
};

} // namespace wirecall

#endif
