#pragma once

#include "zelvar/data/tables/ADIDriver.h"
#include "zelvar/reader/RecentlyUsed.h"

#include <Messages_generated.h>

namespace zelvar::reader {

/// The tables that are open in this reader, as `OpenTrees`.
class OpenTables {
public:
    struct Table {
        ADIDriver *driver = nullptr; ///< that opened it
        void *handle = nullptr;

        Table() = default;
        Table(Table const &) = delete;
        Table &operator=(Table const &) = delete;
        ~Table();
    };

    /// `stop` is handed to the drivers and outlives all tables.
    explicit OpenTables(StopSignal const &stop) : m_stop(&stop) {}
    /// Null, with the reason in `error`, if it does not open.
    Table *Find(wire::TableSpecT const &spec, DError &error);
    void Close(std::uint64_t id) { m_tables.Remove(id); }

private:
    StopSignal const *m_stop;
    RecentlyUsed<Table> m_tables;
};

} // namespace zelvar::reader
