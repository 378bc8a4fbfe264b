#pragma once

#include <QtCore/QPointer>
#include <QtWidgets/QProgressBar>

#include <chrono>

namespace zelvar {

/// A bar at the lower edge of a list, which says how far a long read has come, once it takes longer than a moment. It
/// goes with this object.
class ReadProgress {
public:
    /// `list` outlives this.
    explicit ReadProgress(QWidget &list) : m_list(list) {}
    ~ReadProgress() { delete m_bar.data(); }
    ReadProgress(ReadProgress const &) = delete;
    ReadProgress &operator=(ReadProgress const &) = delete;

    /// What share of the whole lies before what is read next, and behind it.
    void SetStage(double begin, double end) {
        m_begin = begin;
        m_end = end;
    }
    /// In thousandths of the stage; below 0 if nothing is known.
    void Show(int progress);

private:
    QWidget &m_list;
    QPointer<QProgressBar> m_bar;
    std::chrono::steady_clock::time_point m_since = std::chrono::steady_clock::now();
    double m_begin = 0;
    double m_end = 1;
};

} // namespace zelvar
