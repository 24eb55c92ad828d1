#ifndef LUMO_WIRECALL_RELOADABLECERTIFICATE_H
#define LUMO_WIRECALL_RELOADABLECERTIFICATE_H

#include <grpcpp/security/server_credentials.h>

#include <memory>
#include <mutex>
#include <string>

namespace wirecall {

/// A server's certificate and its key, which can be read again while the server runs. Connections keep the
/// one that they began with. Safe from any thread.
class ReloadableCertificate
{
public:
    /// Both are PEM files.
    ReloadableCertificate(std::string certificateFile, std::string keyFile);

    /// Reads both files. Returns false, with the reason in `error`, when they are not a certificate and its
    /// key; what was read before stays.
    bool load(std::string& error);

    /// The credentials of one server, which the object must outlive. gRPC's C++ interface has certificates
    /// that change only as files that it polls, so these use its C interface.
    std::shared_ptr<grpc::ServerCredentials> credentials();

    struct Content
    {
        std::string certificate;
        std::string key;
        bool isNew = false; ///< the server has not taken it yet
    };
    /// Returns what was read last; `isNew` is true for the first caller after each `load`.
    Content take();

private:
    const std::string m_CertificateFile;
    const std::string m_KeyFile;
    std::mutex m_Mutex;
    Content m_Content;
};

} // namespace wirecall

#endif
