#pragma once

#include "support/ServerProcess.h"

#include <string>
#include <vector>

namespace zelvar::test {

/// A PostgreSQL server of our own on the loopback interface, with a database "field" that has PostGIS and its rasters.
/// It ends with the object, and with this process however that goes.
class PostgresServer : Pinned {
public:
    static constexpr char const *kUser = "zelvar"; ///< the superuser
    /// With what files of passwords must escape. Nobody but the server and who logs in may ever show it.
    static constexpr char const *kPassword = "MARKER:7\\%41 pw";
    enum class Encryption { None, Required };

    /// Makes the database and waits until it takes connections. Else what keeps it from doing so.
    [[nodiscard]] std::string Start(Encryption encryption = Encryption::None);
    /// Ends it at once; its files stay. `StartAgain` at the same port.
    void Stop() { m_process.End(); }
    [[nodiscard]] bool StartAgain();

    [[nodiscard]] int Port() const { return m_port; }
    /// The certificate of the authority that vouches for an encrypted one as "localhost".
    [[nodiscard]] std::string Authority() const { return m_folder / "ca.pem"; }
    /// What psql prints of statements, columns parted by "|"; its errors as well.
    std::string Execute(std::string const &statements, std::string const &user = kUser) const;
    /// Runs a loader, as "raster2pgsql ...", and its statements after it. Empty if all went well.
    [[nodiscard]] std::string Load(std::string const &loader) const;
    /// What `application` has sent since the last call, in order: a line each.
    [[nodiscard]] std::vector<std::string> TakeStatements(std::string const &application = "zelvar");

private:
    [[nodiscard]] std::string MakeCertificates() const;
    [[nodiscard]] std::string Psql(std::string const &user) const;

    TempFolder m_folder;
    Encryption m_encryption = Encryption::None;
    int m_port = 0;
    std::size_t m_logSeen = 0; ///< bytes
    ServerProcess m_process;
};

} // namespace zelvar::test
