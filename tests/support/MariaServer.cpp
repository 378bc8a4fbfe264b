#include "support/MariaServer.h"

namespace zelvar::test {

std::string MariaServer::Start(std::string const &statements) {
    std::vector<std::string> const server{"/usr/sbin/mariadbd",
                                          "--no-defaults",
                                          "--user=root",
                                          "--datadir=" + m_folder.Folder("data"),
                                          "--innodb-log-file-size=4M",
                                          "--innodb-buffer-pool-size=16M",
                                          "--innodb-flush-method=nosync",
                                          "--character-set-server=utf8mb4"};
    std::string own = "create database mysql;\nuse mysql;\n";
    for (char const *file : {"mysql_system_tables.sql", "mysql_system_tables_data.sql"})
        own += ReadFile(std::string("/usr/share/mysql/") + file);
    std::vector<std::string> words = server;
    words.insert(words.end(), {"--bootstrap", "--skip-networking"});
    std::string const log = m_folder / "log";
    if (!ServerProcess::Succeeds({.words = words, .log = log, .input = m_folder.Write("own.sql", own)}))
        return "no database (mariadb-server-core): " + ReadFile(log);
    std::string const begin =
        m_folder.Write("begin.sql", "create user '" + std::string(kUser) + "'@'127.0.0.1' identified by '" + kPassword +
                                        "';\n" + statements);
    m_port = StartAtFreePort([&](int port) {
        words = server;
        words.insert(words.end(),
                     {"--port=" + std::to_string(port), "--bind-address=127.0.0.1", "--socket=" + m_folder / "s",
                      "--pid-file=" + m_folder / "pid", "--init-file=" + begin});
        std::size_t const before = ReadFile(log).size();
        return m_process.Start({.words = words, .log = log}, [&] {
            return ReadFile(log).find("mariadbd: ready for connections", before) != std::string::npos;
        });
    });
    std::string const said = ReadFile(log);
    if (m_port == 0)
        return "the server does not start: " + said;
    // It goes on behind a statement that it does not understand.
    std::size_t const fault = said.find("ERROR:");
    return fault == std::string::npos ? std::string() : said.substr(fault);
}

} // namespace zelvar::test
