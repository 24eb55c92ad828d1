#ifndef LUMO_CENTRE_HTTP_TLSCERTIFICATE_H
#define LUMO_CENTRE_HTTP_TLSCERTIFICATE_H

#include <gnutls/abstract.h>

#include <list>
#include <mutex>
#include <string>
#include <vector>

namespace centre {

/// A certificate with its chain and its key for GnuTLS, which can be read again while connections use it.
/// Safe from any thread.
class TlsCertificate
{
public:
    /// Reads both files, which are PEM. Throws Error when they are not a certificate and its key.
    TlsCertificate(std::string certificateFile, std::string keyFile);
    ~TlsCertificate();

    TlsCertificate(const TlsCertificate&) = delete;
    TlsCertificate& operator=(const TlsCertificate&) = delete;

    /// Reads both files again. Throws the same, and keeps what was read before.
    void load();

    /// What was read last, for a new connection. It stays valid while the object lives.
    void give(gnutls_pcert_st** chain, unsigned int* length, gnutls_privkey_t* key);

private:
    struct Loaded
    {
        std::vector<gnutls_pcert_st> chain;
        gnutls_privkey_t key = nullptr;

        Loaded() = default;
        Loaded(const Loaded&) = delete;
        Loaded& operator=(const Loaded&) = delete;
        ~Loaded();
    };

    static void read(const std::string& certificateFile, const std::string& keyFile, Loaded& loaded);

    const std::string m_CertificateFile;
    const std::string m_KeyFile;
    std::mutex m_Mutex;
    std::list<Loaded> m_All; ///< connections still use earlier ones; a few kilobytes for each that was read
};

} // namespace centre

#endif
