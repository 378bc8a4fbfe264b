#include "zelvar/reader/TableRequests.h"

namespace zelvar::reader {

Answer TableRequests::Open(wire::OpenTableT const &asked) {
    return With(m_tables, asked.table, [&](OpenTables::Table const &table) {
        wire::TableOpenedT opened;
        opened.driver = table.driver->GetId();
        opened.encoding = table.driver->GetEncoding(table.handle);
        for (ADIColumn const &column : table.driver->GetColumns(table.handle)) {
            opened.columns.push_back(std::make_unique<wire::TableColumnT>());
            opened.columns.back()->name = column.name;
            opened.columns.back()->type = column.type;
        }
        return Say(std::move(opened));
    });
}

Answer TableRequests::ReadRows(wire::ReadRowsT const &asked) {
    return With(m_tables, asked.table, [&](OpenTables::Table const &table) {
        if (asked.first < 0 || asked.most < 1)
            return Failure("no such rows");
        ADIRows rows;
        if (!table.driver->ReadRows(table.handle, asked.first, asked.most, rows))
            return Failure(m_stop->load() ? kStopped : "the rows cannot be read");
        wire::RowsReadT read;
        read.count = rows.count;
        read.isEnd = rows.isEnd;
        read.texts = std::move(rows.texts);
        read.ends = std::move(rows.ends);
        return Say(std::move(read));
    });
}

} // namespace zelvar::reader
