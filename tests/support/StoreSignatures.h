#pragma once

#include <string>

namespace zelvar::test {

/// The signature that a request to an object store should have, by the description of the signing process. `request` is
/// its head.
[[nodiscard]] std::string AwsSignature(std::string const &request, std::string const &secret);
/// The same of Google's older way.
[[nodiscard]] std::string GoogleSignature(std::string const &request, std::string const &secret);
/// The same of Azure's shared keys.
[[nodiscard]] std::string AzureSignature(std::string const &request, std::string const &account,
                                         std::string const &secret);

/// What stands between `head` and the next `end`; empty without it.
[[nodiscard]] std::string Between(std::string const &text, std::string const &head, char end);

} // namespace zelvar::test
