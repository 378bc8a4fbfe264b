#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Export.h"
#include "zelvar/platform/ui/WindowMessage.h"

#include <QtCore/QPointer>
#include <QtWidgets/QScrollArea>

namespace zelvar {

class FormPage;

/// Image extras: hosts a page of import options and turns its filled-in fields into one option text.
///
/// A page is an HTML file; its form is shown as native controls, no script runs, nothing is fetched. User-interface
/// thread.
class ZELVAR_API ImageExtraWnd : public QScrollArea {
    Q_OBJECT

public:
    explicit ImageExtraWnd(QWidget *parent = nullptr);

    /// Shows the page. The same path again does nothing, so what was typed survives a change of selection within one
    /// format.
    void Navigate(DString const &path);
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

    DString m_optionText;
    DString m_optionsName;
    platform::MessageId m_applyMsg = 0; ///< 0 for none
    DString m_pageUrl;
    QPointer<QObject> m_owner;
    FormPage *m_page = nullptr; ///< the scroll area's widget
};

} // namespace zelvar
