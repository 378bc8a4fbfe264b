#include "zelvar/reader/TableRequests.h"

#include "zelvar/data/RequestScope.h"
#include "zelvar/data/wire/SortedRows.h"

#include <algorithm>

namespace zelvar::reader {

Answer TableRequests::Open(wire::OpenTableT const &asked) {
    return With(m_tables, asked.table, [&](OpenTables::Table const &table) {
        wire::TableOpenedT opened;
        opened.driver = table.driver->GetId();
        opened.encoding = table.driver->GetEncoding(table.handle);
        opened.keepsPlaces = table.driver->KeepsPlaces(table.handle);
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

/// What `work` answers for the table whose rows keep their places and were found to be what the request says.
template <class Asked, class Work>
Answer TableRequests::WithPlaces(Asked const &asked, Work const &work) {
    return With(m_tables, asked.table, [&](OpenTables::Table const &table) {
        if (asked.known == nullptr || !table.driver->KeepsPlaces(table.handle))
            return Failure("the rows have no places");
        TableExtent known{.rows = asked.known->rows,
                          .bytes = asked.known->bytes,
                          .isEnd = asked.known->isEnd,
                          .digest = asked.known->digest};
        RequestScope const scope(RequestKind::Properties, [this] {
            if (m_progress != nullptr)
                *m_progress = RequestScope::Current()->Progress();
            return false;
        });
        DError error;
        Answer answer = work(table, known, error);
        if (answer.type != wire::AnswerBody::NONE)
            return answer;
        if (m_stop->load())
            return Failure(kStopped);
        return error.IsSet() ? Failure(error) : Failure("the rows cannot be read");
    });
}

Answer TableRequests::CountRows(wire::CountRowsT const &asked) {
    return WithPlaces(asked, [&](OpenTables::Table const &table, TableExtent &known, DError &error) {
        if (!table.driver->CountRows(table.handle, asked.rows, known, &error))
            return Answer();
        wire::RowsCountedT counted;
        counted.known = std::make_unique<wire::TableExtentT>();
        counted.known->rows = known.rows;
        counted.known->bytes = known.bytes;
        counted.known->isEnd = known.isEnd;
        counted.known->digest = known.digest;
        return Say(std::move(counted));
    });
}

Answer TableRequests::PickRows(wire::PickRowsT const &asked) {
    return WithPlaces(asked, [&](OpenTables::Table const &table, TableExtent const &known, DError &error) {
        ADIRows rows;
        if (!table.driver->PickRows(table.handle, known, asked.rows, rows, &error))
            return Answer();
        wire::RowsReadT read;
        read.count = rows.count;
        read.texts = std::move(rows.texts);
        read.ends = std::move(rows.ends);
        return Say(std::move(read));
    });
}

Answer TableRequests::SortRows(wire::SortRowsT const &asked, wire::SharedMemory const *memory) {
    return WithPlaces(asked, [&](OpenTables::Table const &table, TableExtent const &known, DError &error) {
        std::uint64_t const room = memory == nullptr ? 0 : std::min<std::uint64_t>(asked.bytes, memory->Size());
        if (known.rows < 0 || static_cast<std::uint64_t>(known.rows) > room / sizeof(std::uint32_t))
            return Failure("no memory for the order");
        RowOrder order;
        if (!table.driver->SortRows(table.handle, known, asked.column, asked.ascending, order, &error))
            return Answer();
        wire::SortedRows const shared(order.rows.size());
        if (shared.Bytes() > room || shared.TieWords() != order.ties.size())
            return Failure("no memory for the order");
        std::ranges::copy(order.rows, shared.Rows(memory->Data()).begin());
        std::ranges::copy(order.ties, shared.Ties(memory->Data()).begin());
        return Say(wire::RowsSortedT{});
    });
}

} // namespace zelvar::reader
