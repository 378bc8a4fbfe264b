#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/model/OpenOutcome.h"

#include <QtWidgets/QWidget>

#include <functional>
#include <vector>

class QLabel;

namespace zelvar {

class CZelComboBox;
namespace platform {
class EllipsisLabel;
}

/// What a driver says is wrong, for showing: each line as lists show names, since it holds some.
[[nodiscard]] QString ShownReason(DString const &reason);

/// The line that says what OK will do: a sign for what is not usable, one line of words with the whole in its tip, and,
/// where several drivers could read what is selected, a choice among them. User-interface thread.
class OpenLine : public QWidget {
public:
    explicit OpenLine(QWidget *parent = nullptr);

    void Show(OpenOutcome const &outcome);
    /// Ids of raster drivers; `chosen` is an index; fewer than two leave no choice, and the box is not there.
    void ShowDrivers(std::vector<DString> const &drivers, int chosen);
    [[nodiscard]] std::vector<DString> const &ShownDrivers() const { return m_shownDrivers; }
    /// Told the index of what the user has chosen.
    void SetDriverHandler(std::function<void(int)> handler) { m_onDriver = std::move(handler); }

    /// Takes a widget behind all else.
    void AddAtEnd(QWidget *widget);

    [[nodiscard]] platform::EllipsisLabel *Label() const { return m_label; }
    [[nodiscard]] CZelComboBox *Drivers() const { return m_drivers; }

private:
    QLabel *m_sign; ///< children
    platform::EllipsisLabel *m_label;
    CZelComboBox *m_drivers;
    std::vector<DString> m_shownDrivers;
    std::function<void(int)> m_onDriver;
};

} // namespace zelvar
