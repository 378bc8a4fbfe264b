#pragma once

#include "zelvar/connections/Secret.h"

#include <map>
#include <optional>
#include <vector>

namespace zelvar {

// The files in which other programs keep logins. The parsers take texts of any kind: what they do not understand they
// leave out. Of each file a megabyte is read at most.

/// A login that was found.
struct FoundLogin {
    DString user{};
    Secret password{};
};

/// Whom a password is for.
struct LoginWish {
    DString host{};
    DString port{};
    DString database{};
    DString user{};
};

/// ~/.pgpass: the first line that fits; "*" fits all.
[[nodiscard]] ZELVAR_API std::optional<Secret> FindInPgPass(std::string_view text, LoginWish const &wish);
/// ~/.netrc: that of the machine, else the default; with `user` that one's alone.
[[nodiscard]] ZELVAR_API std::optional<FoundLogin> FindInNetrc(std::string_view text, DString const &host,
                                                               DString const &user);
/// "[name]" and the "key = value" lines below it; of several of one name all count, the first of a key holds.
using IniSection = std::map<DString, DString>;
[[nodiscard]] ZELVAR_API std::optional<IniSection> FindIniSection(std::string_view text, DString const &name);

/// A file's text, or in `against` why it is not used: a sentence in the user's language, empty for a file that is not
/// there.
struct SecretFileText {
    DString text{};
    DString against{};
};
/// With `isPrivate` a file that others may read is refused.
[[nodiscard]] ZELVAR_API SecretFileText ReadSecretFile(DString const &path, bool isPrivate);

// Where they lie: as their own programs look for them, by their variables of the environment first.
[[nodiscard]] ZELVAR_API DString PgPassFile();
[[nodiscard]] ZELVAR_API std::vector<DString> PgServiceFiles();  ///< the user's, then that of the machine
[[nodiscard]] ZELVAR_API std::vector<DString> OdbcSourceFiles(); ///< the same
[[nodiscard]] ZELVAR_API DString NetrcFile();
[[nodiscard]] ZELVAR_API DString AwsCredentialsFile();
[[nodiscard]] ZELVAR_API DString AwsConfigFile();
[[nodiscard]] ZELVAR_API DString AwsProfile(); ///< the one in use where none is named

} // namespace zelvar
