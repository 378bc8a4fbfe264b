#pragma once

#include "zelvar/data/DataFolderLook.h"
#include "zelvar/model/datasets/DataSetPlan.h"
#include "zelvar/platform/os/ShellNamespace.h"

#include <chrono>
#include <deque>
#include <functional>
#include <vector>

namespace zelvar {

/// Folds the children of one folder: gathers them while the folder is read, and tells the rows once all are there.
class FolderFolding {
public:
    /// A child with a row of its own.
    struct Row {
        platform::ShellChild child;
        std::int64_t beside = 0;             ///< bytes of the files that belong to it
        std::optional<DataFolder> data = {}; ///< what kind of data set a folder is
    };
    /// Numbered files that have one row together.
    struct SeriesRow {
        FoundSeries series;
        std::int64_t size = 0;     ///< bytes of all of them, and of the files that belong to them
        std::int64_t modified = 0; ///< of the newest one, nanoseconds since 1970 UTC
    };
    using IsStopped = std::function<bool()>;

    /// `mask` is that for plain files. `folder` has been asked whether it answers.
    FolderFolding(platform::ShellNamespace const &shell, platform::ShellId const &folder, DataSetFolding folding,
                  std::string_view mask);

    void Add(platform::ShellChild &&child);
    /// Takes what was added. Rows come in the order of the children, and behind them the series in that of their first
    /// members; fewer of them if it is stopped. What is shown may be moved from.
    void Finish(IsStopped const &isStopped, std::function<void(Row &)> const &takeRow,
                std::function<void(SeriesRow &&)> const &takeSeries);

private:
    using Clock = std::chrono::steady_clock;
    /// A child without its name, which stands among `m_names`.
    struct Kept {
        platform::ShellId id;
        platform::ShellKind kind = platform::ShellKind::Unknown;
        bool link = false;
        FileState file;
        std::size_t nameEnd = 0;
    };
    [[nodiscard]] std::optional<DataFolder> LookInto(platform::ShellChild const &child);

    platform::ShellNamespace const &m_shell;
    DataSetFolding m_folding;
    std::string_view m_mask;
    bool m_maySlow;                     ///< to look into many folders may take long there
    std::deque<Kept> m_children;        ///< they stay where they are while more come
    DString m_names;                    ///< of the children, one behind the other: they are read several times
    std::vector<std::uint32_t> m_files; ///< their places among the children
    Clock::duration m_looked{};
};

} // namespace zelvar
