#pragma once

#include "tests/support/TemporaryFolder.h"

#include <string>
#include <sys/types.h>

/// An HTTPS server on 127.0.0.1 with a self-signed certificate, which the openssl program runs. It answers every
/// request with the file of that name in its folder, which contains the whole answer.
class HttpsServer
{
public:
    /// The certificate is for `name`; for the address if `name` is "127.0.0.1".
    explicit HttpsServer(const std::string& name);
    ~HttpsServer();
    HttpsServer(const HttpsServer&) = delete;
    HttpsServer& operator=(const HttpsServer&) = delete;

    /// Sets the answer for "/`file`".
    void SetAnswer(const std::string& file, const std::string& answer) const
    {
        m_folder.Write(file, answer);
    }

    std::string Url(const std::string& file) const
    {
        return "https://127.0.0.1:" + m_port + "/" + file;
    }

    std::string Certificate() const
    {
        return m_folder / "certificate.pem";
    }

private:
    const TemporaryFolder m_folder;
    pid_t m_process = -1;
    int m_output = -1;
    std::string m_port;
};
