#pragma once

#include "support/ServerProcess.h"

#include <vector>

namespace zelvar::test {

/// A web server of Debian's on the loopback interface, with a folder of its own. It ends with the object, and with this
/// process however that goes.
class WebServer : Pinned {
public:
    /// False, with a failure of the test, unless it takes connections. In the settings "@T@" stands for the folder and
    /// "@PORT@" for a free port.
    [[nodiscard]] bool Start(std::vector<std::string> const &program, std::string const &settings);

    /// MapServer behind lighttpd at "/maps?map=field". It offers as maps, coverages and features what is in "data":
    /// "height" of "h.tif", 8 bits, and "plots" of "plots.json", with two styles. Each query is a line of `Requests`.
    [[nodiscard]] bool StartMaps();
    /// nginx with TLS, whose certificate a private authority has signed ("ca.pem"). It shows "files" as "open", as
    /// "private" for ann with the password "marker7secret", and nothing as "closed". "on/SCHEME/PORT/PATH" sends on to
    /// another server here. With `behind` it passes all else on to the server at that port.
    [[nodiscard]] bool StartTls(int behind = 0);
    /// Begins anew with another certificate of the same authority.
    [[nodiscard]] bool RenewCertificate();
    /// That of the certificate, as openssl prints it.
    [[nodiscard]] std::string Fingerprint() const;
    /// lighttpd as a WebDAV server of the folder "files", without a page for who asks for a list.
    [[nodiscard]] bool StartDav();

    [[nodiscard]] TempFolder const &Folder() const { return m_folder; }
    [[nodiscard]] std::string Place() const { return "127.0.0.1:" + std::to_string(m_port); }
    [[nodiscard]] std::vector<std::string> Requests() const;

private:
    void Play(std::string const &script) const; ///< in the folder
    void Certify() const;
    TempFolder m_folder;
    int m_port = 0;
    ServerProcess m_process;
};

} // namespace zelvar::test
