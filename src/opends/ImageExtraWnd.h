#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Export.h"
#include "zelvar/data/options/DriverOption.h"
#include "zelvar/platform/ui/WindowMessage.h"

#include <QtCore/QPointer>
#include <QtWidgets/QScrollArea>

#include <map>
#include <vector>

namespace zelvar {

class FormPage;
class OptionPage;

/// Image extras: hosts a page of import options and turns its filled-in fields into one option text.
///
/// A page is an HTML file; its form is shown as native controls, no script runs, nothing is fetched. In its place
/// stands a page made of what a driver says of its options, where there is one. User-interface thread.
class ZELVAR_API ImageExtraWnd : public QScrollArea {
    Q_OBJECT

public:
    explicit ImageExtraWnd(QWidget *parent = nullptr);

    /// Shows the page. The same path again does nothing, so what was typed survives a change of selection within one
    /// format.
    void Navigate(DString const &path);
    /// Shows a page of a driver's options, each of which counts as soon as it is set. That of the same driver stays,
    /// and gets the values.
    void ShowOptions(DString const &driverId, std::vector<DriverOption> const &options,
                     std::map<DString, DString> const &values);
    /// The values on such a page; empty where another page is shown.
    [[nodiscard]] std::map<DString, DString> GetValues() const;
    /// Reads the option text from the page; `GetOptionText` gives it.
    void ApplyOptions();
    /// The option text last read.
    [[nodiscard]] DString const &GetOptionText() const { return m_optionText; }

    /// A switch only: with an empty name the option text stays empty.
    void SetOptionsName(DString name) { m_optionsName = std::move(name); }
    /// Who is told of a click on "Apply" with changed values; the parent without an owner. Not owned.
    void SetOwner(QObject *owner) { m_owner = owner; }
    void SetApplyMsg(platform::MessageId message) { m_applyMsg = message; }

private:
    [[nodiscard]] DString ReadOptionText() const;
    void OnPressed(QString const &id);
    void TakeOptions();

    DString m_optionText;
    DString m_optionsName;
    platform::MessageId m_applyMsg = 0; ///< 0 for none
    DString m_pageUrl;
    QPointer<QObject> m_owner;
    FormPage *m_page = nullptr; ///< the scroll area's widget, or the next
    OptionPage *m_optionPage = nullptr;
};

} // namespace zelvar
