#include "support/ReaderTalk.h"
#include "support/ScriptedDriver.h"
#include "support/ScriptedTable.h"
#include "zelvar/data/DIOPluginMngr.h"
#include "zelvar/data/FormatPlugin.h"
#include "zelvar/reader/RequestHandler.h"

namespace zelvar::test {
namespace {

/// Requests for tables, answered in this process.
struct ServeTables : testing::Test {
    template <class Body>
    wire::AnswerBodyUnion Ask(Body body) {
        wire::RequestBodyUnion request;
        request.Set(std::move(body));
        auto answer = handler.Handle(request, nullptr);
        return answer ? std::move(*answer) : wire::AnswerBodyUnion();
    }
    static std::unique_ptr<wire::TableSpecT> Spec(std::uint64_t id, std::string driver = "TABLE") {
        auto spec = std::make_unique<wire::TableSpecT>();
        spec->id = id;
        spec->driver = std::move(driver);
        spec->moniker = "/t";
        return spec;
    }
    wire::AnswerBodyUnion Rows(std::uint64_t id, std::int64_t first, int most) {
        wire::ReadRowsT request;
        request.table = Spec(id);
        request.first = first;
        request.most = most;
        return Ask(std::move(request));
    }

    wire::AnswerBodyUnion Open(std::unique_ptr<wire::TableSpecT> spec) {
        wire::OpenTableT request;
        request.table = std::move(spec);
        return Ask(std::move(request));
    }

    ScriptedDrivers drivers;
    ScriptedTableDriver &driver = ScriptedTableDriver::Add();
    StopSignal stop{false};
    reader::RequestHandler handler{stop};
};

TEST_F(ServeTables, ATableIsOpenedByWhateverAsksForItAndClosedOnce) {
    driver.tables["/t"] = {.columns = 2, .rows = 5};
    wire::AnswerBodyUnion const rows = Rows(7, 3, 10);
    ASSERT_NE(rows.AsRowsRead(), nullptr);
    EXPECT_EQ(rows.AsRowsRead()->texts, "3.03.14.04.1");
    EXPECT_EQ(rows.AsRowsRead()->ends, (std::vector<std::uint32_t>{3, 6, 9, 12}));
    EXPECT_TRUE(rows.AsRowsRead()->isEnd);
    wire::AnswerBodyUnion const opened = Open(Spec(7));
    ASSERT_NE(opened.AsTableOpened(), nullptr);
    EXPECT_EQ(opened.AsTableOpened()->driver, "TABLE");
    EXPECT_EQ(opened.AsTableOpened()->columns.at(1)->name, "c1");
    EXPECT_EQ(driver.opens, 1);
    wire::CloseTableT close;
    close.id = 7;
    EXPECT_EQ(Ask(close).value, nullptr);
    EXPECT_EQ(Ask(close).value, nullptr);
    EXPECT_EQ(driver.closes, 1);
}

TEST_F(ServeTables, BadRequestsAreRefused) {
    driver.tables["/t"] = {.columns = 1, .rows = 5, .throwsAt = 4};
    for (auto const &[first, most] : test::Rows<std::int64_t, int>{
             {-1, 1}, {0, 0}, {0, -1}, {std::numeric_limits<std::int64_t>::min(), std::numeric_limits<int>::min()}})
        EXPECT_NE(Rows(1, first, most).AsFailed(), nullptr) << first << " " << most;
    wire::AnswerBodyUnion const behind = Rows(1, std::numeric_limits<std::int64_t>::max(), 1);
    ASSERT_NE(behind.AsRowsRead(), nullptr);
    EXPECT_EQ(behind.AsRowsRead()->count, 0);
    EXPECT_THROW(static_cast<void>(Rows(1, 0, 5)), std::runtime_error); // the server answers with the reason
    EXPECT_NE(Ask(wire::ReadRowsT{}).AsFailed(), nullptr);
    EXPECT_NE(Ask(wire::OpenTableT{}).AsFailed(), nullptr);
    wire::SortRowsT sort; // as for the others, there must be places
    sort.table = Spec(1);
    EXPECT_EQ(Ask(std::move(sort)).AsFailed()->reason, "the rows have no places");
    EXPECT_NE(Ask(wire::CountRowsT{}).AsFailed(), nullptr);
    EXPECT_NE(Ask(wire::PickRowsT{}).AsFailed(), nullptr);
    wire::AnswerBodyUnion const unknown = Open(Spec(2, "UNKNOWN"));
    ASSERT_NE(unknown.AsFailed(), nullptr);
    EXPECT_EQ(unknown.AsFailed()->reason, "no table driver UNKNOWN");
    wire::RequestBodyUnion request;
    wire::ReadRowsT named;
    named.table = Spec(3);
    request.Set(std::move(named));
    ASSERT_NE(reader::RequestHandler::FileOf(request), nullptr);
    EXPECT_EQ(*reader::RequestHandler::FileOf(request), "/t");
    request.Set(wire::ReadRowsT{});
    EXPECT_EQ(reader::RequestHandler::FileOf(request), nullptr);
}

TEST_F(ServeTables, PluginsOfFormatsAreToldWithTheDrivers) {
    DIOPluginMngr::Instance()->Add(std::make_unique<FormatPlugin>(
        FormatFacts{.id = "F", .name = "A format", .extensions = "*.f", .reads = 2, .writes = 4}));
    wire::AnswerBodyUnion const told = Ask(wire::ListDriversT{});
    ASSERT_NE(told.AsDrivers(), nullptr);
    EXPECT_EQ(told.AsDrivers()->tables.at(0)->id, "TABLE");
    EXPECT_EQ(told.AsDrivers()->formats.at(0)->name, "A format");
    EXPECT_EQ(told.AsDrivers()->formats.at(0)->writes, 4U);
}

} // namespace
} // namespace zelvar::test
