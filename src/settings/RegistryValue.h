#pragma once

#include "zelvar/store/SettingsStore.h"

#include <cstdint>

namespace zelvar {

/// Types of registry values. What a settings store holds by itself has a type each; values of all other types keep
/// their bytes and their number there.
enum RegistryType : std::uint32_t {
    kRegNone = 0,
    kRegText = 1,       ///< the store's text, a zero byte behind it
    kRegExpandText = 2, ///< a text with names of variables
    kRegBinary = 3,     ///< the store's bytes
    kRegDword = 4,
    kRegMultiText = 7, ///< the store's texts, a zero byte behind each and one behind all
    kRegQword = 11,    ///< the store's whole number, lowest byte first
    // Numbers of our own, beyond those that registries know.
    kRegDouble = 0x10001,   ///< the store's number with a fraction: IEEE 754, eight bytes, lowest first
    kRegTextList = 0x10002, ///< texts that hold zero bytes: each behind its length of eight bytes, lowest first
};

/// A value as a registry has it: a type and bytes.
struct RegistryValue {
    std::uint32_t type = kRegNone;
    SettingsStore::Bytes data{};
    friend bool operator==(RegistryValue const &, RegistryValue const &) = default;
};

[[nodiscard]] RegistryValue ToRegistry(SettingsStore::Value const &value);
/// The store's value that `ToRegistry` makes just this of.
[[nodiscard]] SettingsStore::Value ToStore(RegistryValue const &value);

} // namespace zelvar
