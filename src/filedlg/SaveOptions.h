#pragma once

#include "zelvar/base/DString.h"

#include <QtWidgets/QWidget>

#include <memory>

class QPushButton;
class QScrollArea;

namespace zelvar {

class DriverOptionChoice;
class OptionPage;

/// The row below the dialog for saving that has the user choose with which options a file is written: a button that
/// unfolds the page of the format's driver. Hidden for a format without options; unfolded from the start where options
/// are not as usual.
class SaveOptions final : public QWidget {
    Q_OBJECT

public:
    /// `given`: text behind "?" to begin with. The dialog grows and shrinks with the page.
    SaveOptions(QWidget &dialog, DString const &given);
    ~SaveOptions() override;
    SaveOptions(SaveOptions const &) = delete;
    SaveOptions &operator=(SaveOptions const &) = delete;

    /// The options of the driver of that id; none for an empty one. May wait for it, two seconds at most.
    void ShowDriver(DString const &driverId);
    /// What is chosen, as text behind "?"; kept for the next time.
    [[nodiscard]] DString Take();
    void Fold() { Unfold(false); }

private:
    void Unfold(bool unfold);
    void Keep();

    QWidget &m_dialog;
    std::unique_ptr<DriverOptionChoice> m_choice;
    QPushButton *m_button;
    QScrollArea *m_area;
    OptionPage *m_page = nullptr; ///< the area's; null without options
};

} // namespace zelvar
