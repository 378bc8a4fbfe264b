#include "support/WebServers.h"

#include "support/Test.h"
#include "zelvar/platform/os/TcpProbe.h"

#include <csignal>
#include <thread>

#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zelvar::test {

namespace {

/// One that nobody listens on now.
int FreePort() {
    int const listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto *const general = reinterpret_cast<sockaddr *>(&address);
    EXPECT_EQ(bind(listener, general, size), 0);
    EXPECT_EQ(getsockname(listener, general, &size), 0);
    close(listener);
    return ntohs(address.sin_port);
}

std::string Replaced(std::string text, std::string const &word, std::string const &by) {
    for (std::size_t at = 0; (at = text.find(word, at)) != std::string::npos; at += by.size())
        text.replace(at, word.size(), by);
    return text;
}

pid_t Run(std::vector<std::string> const &words, std::string const &log) {
    std::vector<char *> arguments;
    for (std::string const &word : words)
        arguments.push_back(const_cast<char *>(word.c_str())); // NOLINT(cppcoreguidelines-pro-type-const-cast)
    arguments.push_back(nullptr);
    pid_t const process = fork();
    if (process == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        int const out = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
        dup2(open("/dev/null", O_RDONLY), 0);
        dup2(out, 1);
        dup2(out, 2);
        close_range(3, ~0U, 0);
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    return process;
}

void End(pid_t process) {
    if (process <= 0)
        return;
    kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
}

/// Whether it takes connections before it ends.
bool IsReady(pid_t process, int port) {
    for (int status = 0; waitpid(process, &status, WNOHANG) == 0; std::this_thread::yield())
        if (!platform::TryToConnect("127.0.0.1:" + std::to_string(port), 100))
            return true;
    return false;
}

} // namespace

WebServer::~WebServer() { End(m_process); }

bool WebServer::Start(std::vector<std::string> const &program, std::string settings) {
    m_folder.Folder("files");
    m_folder.Folder("run");
    settings = Replaced(std::move(settings), "@T@", m_folder.Path());
    std::vector<std::string> words;
    for (std::string const &word : program)
        words.push_back(Replaced(word, "@T@", m_folder.Path()));
    // Somebody else may have taken the port meanwhile.
    for (int i = 0; i < 5; ++i) {
        m_port = FreePort();
        m_folder.Write("server.conf", Replaced(settings, "@PORT@", std::to_string(m_port)));
        m_process = Run(words, m_folder / "run/said");
        if (IsReady(m_process, m_port))
            return true;
        m_process = -1; // it has ended, and was waited for
    }
    ADD_FAILURE() << program.front() << " does not start: " << ReadFile(m_folder / "run/said");
    return false;
}

std::string WebServer::Place() const { return "127.0.0.1:" + std::to_string(m_port); }

std::vector<std::string> WebServer::Requests() const {
    std::vector<std::string> lines;
    std::string const log = ReadFile(m_folder / "run/requests");
    for (std::size_t begin = 0; begin < log.size();) {
        std::size_t const end = std::min(log.find('\n', begin), log.size());
        lines.push_back(log.substr(begin, end - begin));
        begin = end + 1;
    }
    return lines;
}

bool MapServer::Start() {
    Folder().Write("mapserver.conf",
                   "CONFIG ENV MS_MAP_NO_PATH \"1\" END MAPS field \"" + (Folder() / "field.map") + "\" END END\n");
    // Its server keeps its log in memory for a while.
    Folder().Write("maps", "#!/bin/sh\nprintf '%s\\n' \"$QUERY_STRING\" >>'" + (Folder() / "run/requests") +
                               "'\nexec /usr/lib/cgi-bin/mapserv\n");
    chmod((Folder() / "maps").c_str(), 0700);
    return WebServer::Start({"lighttpd", "-D", "-f", "@T@/server.conf"}, R"(
server.document-root = "@T@/files"
server.bind = "127.0.0.1"
server.port = @PORT@
server.modules = ( "mod_alias", "mod_setenv", "mod_cgi" )
server.errorlog = "@T@/run/errors"
alias.url = ( "/maps" => "@T@/maps" )
cgi.assign = ( "maps" => "" )
setenv.add-environment = ( "MAPSERVER_CONFIG_FILE" => "@T@/mapserver.conf" )
)") && !Folder()
               .Write("field.map", R"(MAP
  NAME "field"
  EXTENT 0 0 20 60
  SIZE 256 256
  MAXSIZE 4096
  PROJECTION "init=epsg:4326" END
  OUTPUTFORMAT NAME "png" DRIVER "AGG/PNG" MIMETYPE "image/png" IMAGEMODE RGB EXTENSION "png" END
  OUTPUTFORMAT NAME "GTiff16" DRIVER "GDAL/GTiff" MIMETYPE "image/tiff" IMAGEMODE INT16 EXTENSION "tif" END
  WEB METADATA
    "ows_title" "Field station" "ows_enable_request" "*" "ows_srs" "EPSG:4326 EPSG:3857"
    "ows_onlineresource" ")" + Address() +
                                       R"(&" "wcs_label" "cov"
  END END
  LAYER NAME "height" TYPE RASTER STATUS ON DATA ")" +
                                       (Folder() / "data/h.tif") + R"("
    PROJECTION "init=epsg:4326" END EXTENT 10 50 12.56 51.28
    METADATA "ows_title" "Heights of the field" "ows_extent" "10 50 12.56 51.28" "wcs_rangeset_name" "range"
      "wcs_rangeset_label" "heights" END
  END
  LAYER NAME "plots" TYPE POLYGON STATUS ON DATA ")" +
                                       (Folder() / "data/plots.shp") + R"("
    PROJECTION "init=epsg:4326" END
    METADATA "ows_title" "Plots" "gml_include_items" "all" "gml_featureid" "id" "ows_extent" "0 0 20 1" END
    CLASSGROUP "green"
    CLASS NAME "a" GROUP "green" STYLE COLOR 0 200 0 END END
    CLASS NAME "b" GROUP "red & dark" STYLE COLOR 200 0 0 END END
  END
END
)")
               .empty();
}

std::string MapServer::Address(std::string const &scheme) const {
    return scheme + "http://" + Place() + "/maps?map=field";
}

bool TlsServer::Start() {
    std::string const folder = Folder().Path();
    std::string const make =
        "cd '" + folder +
        "' && exec >/dev/null 2>&1 && openssl req -x509 -newkey rsa:2048 -nodes -keyout ca.key -out ca.pem -subj "
        "'/CN=Lab CA' -days 2 && openssl req -newkey rsa:2048 -nodes -keyout k.pem -out c.csr -subj /CN=127.0.0.1 && "
        "echo subjectAltName=IP:127.0.0.1 >ext && openssl x509 -req -in c.csr -CA ca.pem -CAkey ca.key "
        "-CAcreateserial -days 2 -extfile ext -out c.pem";
    if (std::system(make.c_str()) != 0) { // NOLINT(cert-env33-c,concurrency-mt-unsafe): a script is played
        ADD_FAILURE() << "openssl makes no certificate";
        return false;
    }
    Folder().Write("logins", "ann:{PLAIN}marker7secret\n");
    return WebServer::Start({"nginx", "-c", "@T@/server.conf", "-p", "@T@"}, R"(
daemon off; master_process off; pid @T@/run/pid; error_log @T@/run/errors;
events { worker_connections 64; }
http { log_format short '$request $status $remote_user'; access_log @T@/run/requests short;
 client_body_temp_path @T@/run/a; proxy_temp_path @T@/run/b; fastcgi_temp_path @T@/run/c;
 uwsgi_temp_path @T@/run/d; scgi_temp_path @T@/run/e; types { image/tiff tif; } root @T@; autoindex on;
 server { listen 127.0.0.1:@PORT@ ssl; ssl_certificate @T@/c.pem; ssl_certificate_key @T@/k.pem;
  location /open/ { alias @T@/files/; }
  location /private/ { auth_basic "x"; auth_basic_user_file @T@/logins; alias @T@/files/; }
  location /closed/ { deny all; } } }
)");
}

bool DavServer::Start() {
    return WebServer::Start({"lighttpd", "-D", "-f", "@T@/server.conf"}, R"(
server.document-root = "@T@/files"
server.bind = "127.0.0.1"
server.port = @PORT@
server.modules = ( "mod_webdav" )
webdav.activate = "enable"
webdav.is-readonly = "enable"
server.errorlog = "@T@/run/errors"
)");
}

} // namespace zelvar::test
