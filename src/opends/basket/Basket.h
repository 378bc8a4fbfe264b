#pragma once

#include "zelvar/data/BDIMoniker.h"

#include <functional>
#include <optional>
#include <set>
#include <unordered_set>
#include <vector>

namespace zelvar {

/// Something that was put into a basket, with what it is opened with. A value.
struct BasketEntry {
    std::vector<BDIMoniker> monikers{}; ///< several for a series that is given file by file; never none
    DString name{};                     ///< as the list called it
    DString place{};                    ///< path of what it lies in
    std::int64_t bytes = -1;            ///< -1 where nobody has counted them
};

/// What a text of `MonikerFile` names, as an entry; where it lies and how it is called goes by its words alone.
[[nodiscard]] BasketEntry EntryOf(DString const &moniker);

/// What was gathered to be opened together, in order. One thread.
class Basket {
public:
    using Entries = std::vector<BasketEntry>;
    /// Called when something has come, gone or moved; may be empty.
    void SetChangeHandler(std::function<void()> handler) { m_onChange = std::move(handler); }

    /// Adds, at the end, those that are not there yet with the same options; how many these were.
    std::size_t Add(Entries entries);
    /// Adds what a file of monikers names; false if it is none, see `MonikerFile.h`.
    bool Load(DString const &file);
    [[nodiscard]] bool Save(DString const &file) const; ///< false if it cannot be written
    void Remove(std::set<int> const &rows);
    void Clear();
    /// Moves the rows by one, up or down, in their order; those that are at that end already stay, and what is next to
    /// them. Where the rows are now.
    std::set<int> Move(std::set<int> const &rows, bool down);
    /// Makes the row stand before another, or at the end for one behind the last; where it is now.
    int MoveBefore(int row, int next);

    [[nodiscard]] Entries const &All() const { return m_entries; }
    [[nodiscard]] bool IsEmpty() const { return m_entries.empty(); }
    /// "3 items, 12 KB", in the user's language; the sum is left out where not all sizes are known.
    [[nodiscard]] DString Summary() const;

private:
    void Changed() const;

    Entries m_entries;
    std::unordered_set<DString> m_keys; ///< of the entries
    std::function<void()> m_onChange;
};

} // namespace zelvar
