#include "support/WebServers.h"

#include "support/Test.h"
#include "zelvar/base/DString.h"

#include <sys/stat.h>

namespace zelvar::test {

namespace {

std::string Replaced(std::string text, std::string const &word, std::string const &by) {
    for (std::size_t at = 0; (at = text.find(word, at)) != std::string::npos; at += by.size())
        text.replace(at, word.size(), by);
    return text;
}

} // namespace

bool WebServer::Start(std::vector<std::string> const &program, std::string const &settings) {
    m_folder.Folder("files");
    m_folder.Folder("run");
    m_port = StartAtFreePort([&](int port) {
        m_port = port;
        m_folder.Write("settings",
                       Replaced(Replaced(settings, "@T@", m_folder.Path()), "@PORT@", std::to_string(port)));
        return m_process.Start({.words = program, .log = m_folder / "run/said"},
                               [&] { return TakesConnections(port); });
    });
    if (m_port != 0)
        return true;
    ADD_FAILURE() << program.front() << " does not start: " << ReadFile(m_folder / "run/said");
    return false;
}

std::vector<std::string> WebServer::Requests() const {
    std::vector<std::string> lines = Split(ReadFile(m_folder / "run/requests"), '\n');
    lines.pop_back();
    return lines;
}

bool WebServer::StartMaps() {
    // The web server would keep a log of its own in memory for a while.
    m_folder.Write("maps", "#!/bin/sh\nprintf '%s\\n' \"$QUERY_STRING\" >>'" + (m_folder / "run/requests") +
                               "'\nexec /usr/lib/cgi-bin/mapserv\n");
    chmod((m_folder / "maps").c_str(), 0700);
    m_folder.Write("config",
                   R"(CONFIG ENV MS_MAP_NO_PATH "1" END MAPS field ")" + (m_folder / "field.map") + "\" END END");
    if (!Start({"lighttpd", "-D", "-f", m_folder / "settings"}, R"(server.document-root = "@T@/files"
server.bind = "127.0.0.1"
server.port = @PORT@
server.modules = ( "mod_alias", "mod_setenv", "mod_cgi" )
server.errorlog = "@T@/run/errors"
alias.url = ( "/maps" => "@T@/maps" )
cgi.assign = ( "maps" => "" )
setenv.add-environment = ( "MAPSERVER_CONFIG_FILE" => "@T@/config" )
)"))
        return false;
    constexpr char const *map = R"(MAP NAME "field" EXTENT 0 0 20 60 SIZE 256 256 PROJECTION "init=epsg:4326" END
OUTPUTFORMAT NAME "png" DRIVER "AGG/PNG" MIMETYPE "image/png" IMAGEMODE RGB EXTENSION "png" END
OUTPUTFORMAT NAME "GTiff16" DRIVER "GDAL/GTiff" MIMETYPE "image/tiff" IMAGEMODE INT16 EXTENSION "tif" END
WEB METADATA "ows_title" "Field station" "ows_enable_request" "*" "ows_srs" "EPSG:4326 EPSG:3857"
  "ows_onlineresource" "http://@P@/maps?map=field&" "wcs_label" "cov" END END
LAYER NAME "height" TYPE RASTER STATUS ON DATA "@T@/data/h.tif" PROJECTION "init=epsg:4326" END
  EXTENT 10 50 12.56 51.28 METADATA "ows_title" "Heights of the field" "ows_extent" "10 50 12.56 51.28"
  "wcs_rangeset_name" "range" "wcs_rangeset_label" "heights" END END
LAYER NAME "plots" TYPE POLYGON STATUS ON CONNECTIONTYPE OGR CONNECTION "@T@/data/plots.json" DATA "plots"
  PROJECTION "init=epsg:4326" END METADATA "ows_title" "Plots" "gml_include_items" "all" "gml_featureid" "id"
  "ows_extent" "0 0 20 1" END CLASSGROUP "green"
  CLASS NAME "a" GROUP "green" STYLE COLOR 0 200 0 END END
  CLASS NAME "b" GROUP "red & dark" STYLE COLOR 200 0 0 END END END END)";
    m_folder.Write("field.map", Replaced(Replaced(map, "@P@", Place()), "@T@", m_folder.Path()));
    return true;
}

void WebServer::Play(std::string const &script) const {
    std::string const whole = "cd '" + m_folder.Path() + "' && exec >said 2>&1 && " + script;
    EXPECT_EQ(std::system(whole.c_str()), 0); // NOLINT(cert-env33-c,concurrency-mt-unsafe): a script is played
}

void WebServer::Certify() const {
    Play("openssl req -newkey rsa:2048 -nodes -keyout k.pem -out c.csr -subj /CN=127.0.0.1 && echo "
         "subjectAltName=IP:127.0.0.1 >ext && openssl x509 -req -in c.csr -CA ca.pem -CAkey ca.key -CAcreateserial "
         "-days 2 -extfile ext -out c.pem");
}

std::string WebServer::Fingerprint() const {
    Play("openssl x509 -in c.pem -noout -fingerprint -sha256");
    return ReadFile(m_folder / "said");
}

bool WebServer::RenewCertificate() {
    Certify();
    m_process.End();
    return m_process.Start(
        {.words = {"nginx", "-c", m_folder / "settings", "-p", m_folder.Path()}, .log = m_folder / "run/said"},
        [this] { return TakesConnections(m_port); });
}

bool WebServer::StartTls(int behind) {
    Play("openssl req -x509 -newkey rsa:2048 -nodes -keyout ca.key -out ca.pem -subj '/CN=Lab CA' -days 2");
    Certify();
    m_folder.Write("logins", "ann:{PLAIN}marker7secret\n");
    std::string const to = "proxy_set_header Host $http_host; proxy_pass http://127.0.0.1:" + std::to_string(behind);
    std::string const rest = behind == 0 ? "" : "location / { " + to + "; }";
    return Start({"nginx", "-c", m_folder / "settings", "-p", m_folder.Path()}, R"(
daemon off; master_process off; pid @T@/run/pid; error_log @T@/run/errors; events { worker_connections 64; }
http { access_log @T@/run/requests; client_body_temp_path @T@/run/a; proxy_temp_path @T@/run/b;
 fastcgi_temp_path @T@/run/c; uwsgi_temp_path @T@/run/d; scgi_temp_path @T@/run/e; autoindex on;
 server { listen 127.0.0.1:@PORT@ ssl; ssl_certificate @T@/c.pem; ssl_certificate_key @T@/k.pem; root @T@;
  location /open/ { alias @T@/files/; }
  location /private/ { auth_basic "x"; auth_basic_user_file @T@/logins; alias @T@/files/; }
  location ~ ^/on/(https?)/(.*)$ { return 302 $1://127.0.0.1:$2; }
  location /closed/ { deny all; } )" + rest + " } }");
}

bool WebServer::StartDav() {
    return Start({"lighttpd", "-D", "-f", m_folder / "settings"}, R"(server.document-root = "@T@/files"
server.bind = "127.0.0.1"
server.port = @PORT@
server.modules = ( "mod_webdav" )
webdav.activate = "enable"
webdav.is-readonly = "enable"
server.errorlog = "@T@/run/errors"
)");
}

} // namespace zelvar::test
