#pragma once

#include "zelvar/data/options/OptionValues.h"

#include <QtWidgets/QWidget>

#include <vector>

class QLineEdit;

namespace zelvar {

class FormPage;

/// A page with a control for each option of a driver, made of what the driver says of them. User-interface thread.
class OptionPage : public QWidget {
    Q_OBJECT

public:
    OptionPage(DString const &title, std::vector<DriverOption> options, QWidget *parent);

    /// Options without a value are as usual.
    void SetValues(OptionValues const &values);
    [[nodiscard]] OptionValues Values() const;
    /// What stands behind "?" of a moniker: what is not as usual.
    [[nodiscard]] DString Text() const { return ToOptionText(m_options, Values()); }
    [[nodiscard]] std::vector<DriverOption> const &Options() const { return m_options; }

Q_SIGNALS:
    /// The user has set an option to something else, or all of them back.
    void Changed();

private:
    void Tell();
    void ShowFault(QLineEdit &field) const;

    std::vector<DriverOption> m_options;
    FormPage *m_page; ///< a child
    DString m_told;   ///< as they were when the change before was told
};

} // namespace zelvar
