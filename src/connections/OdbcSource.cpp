#include "zelvar/connections/OdbcSource.h"

#include "zelvar/connections/SecretFiles.h"

namespace zelvar {

void TakeOdbcSource(ConnectionTerms &terms) {
    auto const source = terms.options.find("dsn");
    if (source == terms.options.end())
        return;
    DString const name = source->second;
    for (DString const &path : OdbcSourceFiles()) {
        SecretFileText file = ReadSecretFile(path, false);
        std::optional<IniSection> section = FindIniSection(file.text, name);
        Wipe(file.text);
        if (!section)
            continue;
        for (auto &[key, value] : *section) {
            if (!EqualNoCase(key, "PWD") && !EqualNoCase(key, "Password")) {
                terms.options["odbc." + key] = value;
                continue;
            }
            if (!value.empty())
                terms.secrets.try_emplace("password", value);
            Wipe(value);
        }
        return;
    }
}

} // namespace zelvar
