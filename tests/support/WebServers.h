#pragma once

#include "support/TestFiles.h"

#include <vector>

#include <sys/types.h>

namespace zelvar::test {

/// A web server of Debian's on the loopback interface, with a folder of its own. It ends with the object, and with this
/// process however that goes.
class WebServer : Pinned {
public:
    ~WebServer();
    /// False, with a failure of the test, unless it takes connections. In the settings "@T@" stands for the folder and
    /// "@PORT@" for a free port.
    [[nodiscard]] bool Start(std::vector<std::string> const &program, std::string settings);
    [[nodiscard]] TempFolder const &Folder() const { return m_folder; }
    /// "127.0.0.1:8087".
    [[nodiscard]] std::string Place() const;
    /// The lines that it has written into its log of requests.
    [[nodiscard]] std::vector<std::string> Requests() const;

private:
    TempFolder m_folder;
    int m_port = 0;
    pid_t m_process = -1;
};

/// MapServer behind lighttpd. It offers as maps, coverages and features what is in "data": the layers "height" of
/// "h.tif", 8 bits, and "plots" of "plots.shp", with two styles and a name that needs escapes.
class MapServer : public WebServer {
public:
    [[nodiscard]] bool Start();
    /// "http://127.0.0.1:8087/maps?map=field"; with another word in front, as "wms+", the address of a connection.
    [[nodiscard]] std::string Address(std::string const &scheme = {}) const;
};

/// nginx with TLS, whose certificate a private authority has signed ("ca.pem"), and plain folders: "open" for all,
/// "private" for ann with the password "marker7secret", "closed" for nobody. All three show what is in "files".
class TlsServer : public WebServer {
public:
    [[nodiscard]] bool Start();
};

/// lighttpd as a WebDAV server of the folder "files", without a page for who asks for a list.
class DavServer : public WebServer {
public:
    [[nodiscard]] bool Start();
};

} // namespace zelvar::test
