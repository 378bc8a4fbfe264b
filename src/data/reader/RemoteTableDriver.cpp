#include "zelvar/data/reader/RemoteTableDriver.h"

#include "zelvar/base/TypedSecrets.h"
#include "zelvar/data/reader/AnswerReading.h"
#include "zelvar/data/reader/Readers.h"
#include "zelvar/data/tables/ADIDriverMngr.h"
#include "zelvar/data/wire/SortedRows.h"

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

namespace zelvar {

namespace {

struct Table {
    wire::TableSpecT spec;
    StopSignal const *stop = nullptr;
    int reader = 0; ///< that has it open, as far as we know
    std::vector<ADIColumn> columns;
    DString encoding;
    bool keepsPlaces = false;
};

Table &Of(void *handle) { return *static_cast<Table *>(handle); }

template <class Body>
Readers::Answer AskAbout(Table &table, char const *what, Body body, std::size_t memory = 0) {
    body.table = std::make_unique<wire::TableSpecT>(table.spec);
    body.table->moniker = WithSecrets(std::move(body.table->moniker)); // for the reader, which connects
    Readers::Call const call{.kind = RequestKind::Properties,
                             .what = what,
                             .subject = table.spec.moniker,
                             .stop = table.stop,
                             .preferred = table.reader,
                             .pixelBytes = memory};
    Readers::Answer answer = Readers::Instance().Ask(call, std::move(body));
    if (answer.message != nullptr)
        table.reader = answer.reader;
    return answer;
}

std::unique_ptr<wire::TableExtentT> ToWire(TableExtent const &known) {
    auto extent = std::make_unique<wire::TableExtentT>();
    extent->rows = known.rows;
    extent->bytes = known.bytes;
    extent->isEnd = known.isEnd;
    extent->digest = known.digest;
    return extent;
}

/// The answer of that kind, or null, with the reason in `*error` and beside the moniker.
template <class Said>
Said *SaidIn(Readers::Answer const &answer, Table const &table, DError *error) {
    Said *const said = BodyOf<Said>(answer.message.get());
    if (said != nullptr)
        return said;
    DError const reason = FailureOf(answer.message.get(), answer.error);
    if (answer.message != nullptr)
        Readers::Instance().Verdicts().SetFailure(table.spec.moniker, reason);
    if (error != nullptr)
        *error = reason;
    return nullptr;
}

/// What stands for a driver that only readers of its connections have, as one of a service, which is none of ours; null
/// for a name that is none. Any of these serves every handle; what differs is what they are called.
RemoteTableDriver *StandInFor(DString const &id, DString const &family) {
    constexpr std::size_t kMostNames = 100; // a reader may tell anything
    constexpr std::size_t kLongest = 64;    // bytes
    static std::mutex mutex;
    static std::map<DString, std::unique_ptr<RemoteTableDriver>> known; // for ever
    std::lock_guard const lock(mutex);
    if (auto const at = known.find(id); at != known.end())
        return at->second.get();
    if (id.empty() || id.size() > kLongest || known.size() >= kMostNames)
        return nullptr;
    wire::DriverFactsT facts;
    facts.id = id;
    facts.info = ToValidUtf8(id);
    facts.family = family;
    return known.emplace(id, std::make_unique<RemoteTableDriver>(std::move(facts))).first->second.get();
}

} // namespace

void *RemoteTableDriver::Open(BDIMoniker const &moniker, ADIDriver **opener, StopSignal const *stop, DError *error,
                              bool family) {
    auto table = std::make_unique<Table>();
    table->spec.id = Readers::Instance().NextId();
    table->spec.driver = m_facts.id;
    table->spec.family = family;
    table->spec.moniker = moniker.GetText();
    table->stop = stop;
    Readers::Answer const answer = AskAbout(*table, "table", wire::OpenTableT());
    if (auto *const opened = BodyOf<wire::TableOpenedT>(answer.message.get())) {
        table->encoding = ToValidUtf8(opened->encoding);
        table->keepsPlaces = opened->keepsPlaces;
        table->columns = ColumnsFrom(std::move(*opened));
        ADIDriver *const named = ADIDriverMngr::Instance()->GetDriver(opened->driver.c_str());
        auto *opens =
            named == nullptr ? StandInFor(opened->driver, m_facts.family) : dynamic_cast<RemoteTableDriver *>(named);
        *opener = opens == nullptr ? this : opens;
        return table.release();
    }
    Readers::Instance().SayNotOpened(moniker.GetText(), answer, error);
    return nullptr;
}

void *RemoteTableDriver::OpenTable(BDIMoniker const &moniker, StopSignal const *stop, DError *error) {
    ADIDriver *opener = nullptr;
    return Open(moniker, &opener, stop, error, false);
}

void *RemoteTableDriver::OpenTableInFamily(BDIMoniker const &moniker, ADIDriver **opener, StopSignal const *stop,
                                           DError *error) {
    return Open(moniker, opener, stop, error, true);
}

void RemoteTableDriver::CloseTable(void *handle) {
    if (handle == nullptr)
        return;
    wire::CloseTableT body;
    body.id = Of(handle).spec.id;
    Readers::Instance().Tell(Of(handle).reader, body);
    delete &Of(handle);
}

std::vector<ADIColumn> const &RemoteTableDriver::GetColumns(void *handle) const { return Of(handle).columns; }

DString RemoteTableDriver::GetEncoding(void *handle) const { return Of(handle).encoding; }

bool RemoteTableDriver::ReadRows(void *handle, std::int64_t first, int most, ADIRows &rows) {
    wire::ReadRowsT body;
    body.first = first;
    body.most = most;
    Readers::Answer const answer = AskAbout(Of(handle), "rows", std::move(body));
    auto *const read = BodyOf<wire::RowsReadT>(answer.message.get());
    if (read == nullptr || !TakeRows(std::move(*read), Of(handle).columns.size(), most, rows))
        return false;
    rows.first = first;
    return true;
}

bool RemoteTableDriver::KeepsPlaces(void *handle) const { return Of(handle).keepsPlaces; }

bool RemoteTableDriver::CountRows(void *handle, std::int64_t rows, TableExtent &known, DError *error) {
    wire::CountRowsT body;
    body.known = ToWire(known);
    body.rows = rows;
    Readers::Answer const answer = AskAbout(Of(handle), "number of rows", std::move(body));
    auto const *const counted = SaidIn<wire::RowsCountedT>(answer, Of(handle), error);
    if (counted == nullptr || counted->known == nullptr || counted->known->rows < known.rows)
        return false;
    known = {.rows = counted->known->rows,
             .bytes = counted->known->bytes,
             .isEnd = counted->known->isEnd,
             .digest = counted->known->digest};
    return true;
}

bool RemoteTableDriver::PickRows(void *handle, TableExtent const &known, std::vector<std::int64_t> const &wanted,
                                 ADIRows &rows, DError *error) {
    wire::PickRowsT body;
    body.known = ToWire(known);
    body.rows = wanted;
    Readers::Answer const answer = AskAbout(Of(handle), "picked rows", std::move(body));
    auto *const read = SaidIn<wire::RowsReadT>(answer, Of(handle), error);
    return read != nullptr && read->count > 0 &&
           TakeRows(std::move(*read), Of(handle).columns.size(), static_cast<int>(wanted.size()), rows);
}

bool RemoteTableDriver::SortRows(void *handle, TableExtent const &known, int column, bool ascending, RowOrder &order,
                                 DError *error) {
    wire::SortedRows const sorted(static_cast<std::size_t>(known.rows));
    wire::SortRowsT body;
    body.known = ToWire(known);
    body.column = column;
    body.ascending = ascending;
    body.bytes = sorted.Bytes();
    Readers::Answer const answer = AskAbout(Of(handle), "order of rows", std::move(body), sorted.Bytes());
    if (SaidIn<wire::RowsSortedT>(answer, Of(handle), error) == nullptr)
        return false;
    order = RowOrder(static_cast<std::size_t>(known.rows));
    std::ranges::copy(sorted.Ties(answer.pixels->Data()), order.ties.begin());
    bool const isTaken = TakeOrder(sorted.Rows(answer.pixels->Data()), order.rows);
    answer.pixels->Clear();
    return isTaken;
}

} // namespace zelvar
