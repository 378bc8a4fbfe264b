#pragma once

#include "zelvar/search/SearchQuery.h"

#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace zelvar {

/// What was once read of files, kept on disk by path, size and time, so that the next search reads nothing. One SQLite
/// file for all programs of the user; where it is locked, full, damaged or cannot be made, nothing is known and nothing
/// kept, and nobody is told. A damaged one is renamed, and begun anew. Any thread.
class ZELVAR_API FactsStore {
public:
    struct Key {
        DString path{}; ///< of the file, behind it what names a node in it
        std::int64_t size = 0;
        std::int64_t modified = 0; ///< nanoseconds since 1970 UTC
        friend bool operator==(Key const &, Key const &) = default;
    };
    using Known = std::pair<Key, ItemFacts>;
    static constexpr std::int64_t kMostBytes = std::int64_t{200} << 20U;

    /// `most`: bytes of the file, above which what was kept first goes.
    explicit FactsStore(DString file = UsualFile(), std::int64_t most = kMostBytes);
    ~FactsStore();
    FactsStore(FactsStore const &) = delete;
    FactsStore &operator=(FactsStore const &) = delete;

    /// "zelvar/facts.db" in the user's folder for caches; empty where the user has no home.
    [[nodiscard]] static DString UsualFile();

    /// Nothing for what is not known, or of another size or time now.
    [[nodiscard]] std::vector<std::optional<ItemFacts>> Find(std::span<Key const> keys);
    void Keep(std::span<Known const> known);

private:
    class Database;
    std::unique_ptr<Database> m_database;
};

} // namespace zelvar
