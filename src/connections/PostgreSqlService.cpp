#include "zelvar/connections/PostgreSqlService.h"

#include "zelvar/connections/SecretFiles.h"

namespace zelvar {

Connection WithServiceFields(Connection connection) {
    DString const service = connection.Field("service");
    if (connection.kind != ConnectionKind::PostgreSql || service.empty())
        return connection;
    for (DString const &path : PgServiceFiles()) {
        SecretFileText file = ReadSecretFile(path, false);
        std::optional<IniSection> section = FindIniSection(file.text, service);
        Wipe(file.text);
        if (!section)
            continue;
        Wipe((*section)["password"]);
        for (auto const &[key, field] : {std::pair{"host", "host"},
                                         {"hostaddr", "host"},
                                         {"port", "port"},
                                         {"dbname", "database"},
                                         {"user", "user"},
                                         {"sslmode", "sslmode"}})
            if (auto const found = section->find(key); found != section->end() && connection.Field(field).empty())
                connection.fields[field] = found->second;
        break;
    }
    return connection;
}

} // namespace zelvar
