#include "components/wirecall/ReloadableCertificate.h"

#include "components/wirecall/PemFile.h"

#include <grpc/grpc.h>
#include <grpc/grpc_security.h>
#include <openssl/ssl.h>

#include <utility>

namespace wirecall {

namespace {

bool isPair(const std::string& certificateFile, const std::string& keyFile)
{
    const std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context(SSL_CTX_new(TLS_server_method()),
                                                                    SSL_CTX_free);
    return context && SSL_CTX_use_certificate_chain_file(context.get(), certificateFile.c_str()) == 1 &&
           SSL_CTX_use_PrivateKey_file(context.get(), keyFile.c_str(), SSL_FILETYPE_PEM) == 1 &&
           SSL_CTX_check_private_key(context.get()) == 1;
}

/// gRPC asks before each handshake.
grpc_ssl_certificate_config_reload_status fetch(void* certificate,
                                                grpc_ssl_server_certificate_config** fetched)
{
    const ReloadableCertificate::Content content = static_cast<ReloadableCertificate*>(certificate)->take();
    if (!content.isNew)
        return GRPC_SSL_CERTIFICATE_CONFIG_RELOAD_UNCHANGED;
    const grpc_ssl_pem_key_cert_pair pair = {content.key.c_str(), content.certificate.c_str()};
    // gRPC insists on certificates to check clients by, which nobody asks for one.
    *fetched = grpc_ssl_server_certificate_config_create(content.certificate.c_str(), &pair, 1);
    return GRPC_SSL_CERTIFICATE_CONFIG_RELOAD_NEW;
}

class Credentials final : public grpc::ServerCredentials
{
public:
    explicit Credentials(ReloadableCertificate& certificate)
        : m_Credentials(grpc_ssl_server_credentials_create_with_options(
              grpc_ssl_server_credentials_create_options_using_config_fetcher(
                  GRPC_SSL_DONT_REQUEST_CLIENT_CERTIFICATE, fetch, &certificate)))
    {
    }
    ~Credentials() override { grpc_server_credentials_release(m_Credentials); }

    void SetAuthMetadataProcessor(const std::shared_ptr<grpc::AuthMetadataProcessor>&) override {}

private:
    int AddPortToServer(const std::string& address, grpc_server* server) override
    {
        return grpc_server_add_http2_port(server, address.c_str(), m_Credentials);
    }

    grpc_server_credentials* const m_Credentials;
};

} // namespace

ReloadableCertificate::ReloadableCertificate(std::string certificateFile, std::string keyFile)
    : m_CertificateFile(std::move(certificateFile)), m_KeyFile(std::move(keyFile))
{
}

bool ReloadableCertificate::load(std::string& error)
{
    Content read;
    if (!readPemFile(m_KeyFile, read.key, error) || !readPemFile(m_CertificateFile, read.certificate, error))
        return false;
    if (!isPair(m_CertificateFile, m_KeyFile)) {
        error = m_CertificateFile + " and " + m_KeyFile + " are not a certificate and its key";
        return false;
    }
    read.isNew = true;
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Content = std::move(read);
    return true;
}

std::shared_ptr<grpc::ServerCredentials> ReloadableCertificate::credentials()
{
    return std::make_shared<Credentials>(*this);
}

ReloadableCertificate::Content ReloadableCertificate::take()
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (!m_Content.isNew)
        return {};
    Content content = m_Content;
    m_Content.isNew = false;
    return content;
}

} // namespace wirecall
