#include "centre/http/TlsCertificate.h"

#include "centre/base/Error.h"

#include <gnutls/gnutls.h>
#include <gnutls/x509.h>

#include <memory>

namespace centre {

namespace {

void require(int result, const std::string& what)
{
    if (result < 0)
        throw Error(ExitCode::Failed, what + ": " + ::gnutls_strerror(result));
}

using Credentials =
    std::unique_ptr<gnutls_certificate_credentials_st, decltype(&::gnutls_certificate_free_credentials)>;

Credentials newCredentials()
{
    gnutls_certificate_credentials_t credentials = nullptr;
    require(::gnutls_certificate_allocate_credentials(&credentials), "TLS");
    return {credentials, &::gnutls_certificate_free_credentials};
}

} // namespace

TlsCertificate::Loaded::~Loaded()
{
    for (gnutls_pcert_st& each : chain)
        ::gnutls_pcert_deinit(&each);
    if (key != nullptr)
        ::gnutls_privkey_deinit(key);
}

TlsCertificate::TlsCertificate(std::string certificateFile, std::string keyFile)
    : m_CertificateFile(std::move(certificateFile)), m_KeyFile(std::move(keyFile))
{
    load();
}

TlsCertificate::~TlsCertificate() = default;

void TlsCertificate::load()
{
    std::list<Loaded> loaded(1);
    read(m_CertificateFile, m_KeyFile, loaded.front());
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_All.splice(m_All.end(), loaded);
}

void TlsCertificate::give(gnutls_pcert_st** chain, unsigned int* length, gnutls_privkey_t* key)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    *chain = m_All.back().chain.data();
    *length = static_cast<unsigned int>(m_All.back().chain.size());
    *key = m_All.back().key;
}

void TlsCertificate::read(const std::string& certificateFile, const std::string& keyFile, Loaded& loaded)
{
    const std::string what = certificateFile + " and " + keyFile + " are not a certificate and its key";
    const Credentials credentials = newCredentials();
    const int place = ::gnutls_certificate_set_x509_key_file(credentials.get(), certificateFile.c_str(),
                                                             keyFile.c_str(), GNUTLS_X509_FMT_PEM);
    require(place, what);
    gnutls_x509_privkey_t key = nullptr;
    require(::gnutls_certificate_get_x509_key(credentials.get(), 0, &key), what);
    const int imported = ::gnutls_privkey_init(&loaded.key) < 0
                             ? GNUTLS_E_MEMORY_ERROR
                             : ::gnutls_privkey_import_x509(loaded.key, key, GNUTLS_PRIVKEY_IMPORT_COPY);
    ::gnutls_x509_privkey_deinit(key);
    require(imported, what);

    gnutls_x509_crt_t* certificates = nullptr;
    unsigned int count = 0;
    require(::gnutls_certificate_get_x509_crt(credentials.get(), 0, &certificates, &count), what);
    int result = 0;
    for (unsigned int i = 0; i < count; ++i) {
        gnutls_pcert_st certificate = {};
        if (result >= 0)
            result = ::gnutls_pcert_import_x509(&certificate, certificates[i], 0);
        if (result >= 0)
            loaded.chain.push_back(certificate);
        ::gnutls_x509_crt_deinit(certificates[i]);
    }
    ::gnutls_free(certificates);
    require(result, what);
}

} // namespace centre
