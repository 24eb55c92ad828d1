#ifndef LUMO_TESTS_SUPPORT_CERTIFICATE_H
#define LUMO_TESTS_SUPPORT_CERTIFICATE_H

#include <QProcess>
#include <QTemporaryDir>

#include <string>

/// A self-signed certificate for 127.0.0.1 and localhost in a temporary folder.
class Certificate
{
public:
    Certificate()
    {
        QProcess openssl;
        openssl.start("openssl",
                      {"req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
                       "-days", "2", "-subj", "/CN=localhost", "-addext",
                       "subjectAltName=DNS:localhost,IP:127.0.0.1", "-keyout", QString::fromStdString(key()),
                       "-out", QString::fromStdString(certificate())});
        m_Made = openssl.waitForFinished() && openssl.exitCode() == 0;
    }

    bool made() const { return m_Made; }
    std::string certificate() const { return m_Folder.filePath("certificate.pem").toStdString(); }
    std::string key() const { return m_Folder.filePath("key.pem").toStdString(); }

private:
    QTemporaryDir m_Folder;
    bool m_Made = false;
};

#endif
