#pragma once

#include "zelvar/data/tables/ADIDriverMngr.h"

#include <map>
#include <memory>
#include <stdexcept>

namespace zelvar::test {

/// Table driver that serves tables written down by a test: columns are texts "c0", "c1", ..., the cell of a row and a
/// column is "<row>.<column>".
class ScriptedTableDriver : public ADIDriver {
public:
    struct Table {
        int columns = 2;
        int rows = 0;
        int throwsAt = -1; ///< row
    };
    static ScriptedTableDriver &Add() {
        auto driver = std::make_unique<ScriptedTableDriver>();
        ScriptedTableDriver &added = *driver;
        ADIDriverMngr::Instance()->Add(std::move(driver));
        return added;
    }

    std::map<DString, Table> tables;
    int opens = 0;
    int closes = 0;

    [[nodiscard]] DString GetId() const override { return "TABLE"; }
    [[nodiscard]] DString GetInfo() const override { return "scripted TABLE"; }
    void *OpenTable(BDIMoniker const &moniker, StopSignal const *, DError *) override {
        auto const table = tables.find(moniker.GetText());
        if (table == tables.end())
            return nullptr;
        ++opens;
        auto open = std::make_unique<Open>(Open{.table = table->second, .columns = {}});
        for (int col = 0; col < table->second.columns; ++col)
            open->columns.push_back({.name = "c" + std::to_string(col)});
        return open.release();
    }
    void CloseTable(void *handle) override {
        ++closes;
        delete static_cast<Open *>(handle);
    }
    [[nodiscard]] std::vector<ADIColumn> const &GetColumns(void *handle) const override {
        return static_cast<Open *>(handle)->columns;
    }
    bool ReadRows(void *handle, std::int64_t first, int most, ADIRows &rows) override {
        Table const &table = static_cast<Open *>(handle)->table;
        for (std::int64_t row = first; row < table.rows && rows.count < most; ++row) {
            if (row == table.throwsAt)
                throw std::runtime_error("a bad row");
            for (int col = 0; col < table.columns; ++col) {
                rows.texts += std::to_string(row) + "." + std::to_string(col);
                rows.ends.push_back(static_cast<std::uint32_t>(rows.texts.size()));
            }
            ++rows.count;
        }
        rows.isEnd = first + rows.count >= table.rows;
        return true;
    }

private:
    struct Open {
        Table table;
        std::vector<ADIColumn> columns;
    };
};

} // namespace zelvar::test
