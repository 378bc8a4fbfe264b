#include "zelvar/data/reader/RemoteTableDriver.h"

#include "zelvar/data/reader/AnswerReading.h"
#include "zelvar/data/reader/Readers.h"
#include "zelvar/data/tables/ADIDriverMngr.h"

#include <utility>

namespace zelvar {

namespace {

struct Table {
    wire::TableSpecT spec;
    StopSignal const *stop = nullptr;
    int reader = 0; ///< that has it open, as far as we know
    std::vector<ADIColumn> columns;
    DString encoding;
};

Table &Of(void *handle) { return *static_cast<Table *>(handle); }

template <class Body>
Readers::Answer AskAbout(Table &table, char const *what, Body body) {
    body.table = std::make_unique<wire::TableSpecT>(table.spec);
    Readers::Call const call{.kind = RequestKind::Properties,
                             .what = what,
                             .subject = table.spec.moniker,
                             .stop = table.stop,
                             .preferred = table.reader};
    Readers::Answer answer = Readers::Instance().Ask(call, std::move(body));
    if (answer.message != nullptr)
        table.reader = answer.reader;
    return answer;
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
    DString reason = answer.reason;
    if (answer.message != nullptr) {
        if (auto *const opened = BodyOf<wire::TableOpenedT>(answer.message.get())) {
            table->encoding = ToValidUtf8(opened->encoding);
            table->columns = ColumnsFrom(std::move(*opened));
            ADIDriver *const named = ADIDriverMngr::Instance()->GetDriver(opened->driver.c_str());
            *opener = dynamic_cast<RemoteTableDriver *>(named) != nullptr ? named : this;
            return table.release();
        }
        if (wire::FailedT const *const failed = BodyOf<wire::FailedT>(answer.message.get()))
            reason = failed->reason;
    } else {
        reason = "\"" + moniker.GetText() + "\": " + reason;
    }
    if (error != nullptr)
        error->Set(reason);
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

} // namespace zelvar
