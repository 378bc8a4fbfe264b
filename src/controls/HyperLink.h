#pragma once

#include "zelvar/base/Color.h"
#include "zelvar/base/DString.h"

#include <QtCore/QUrl>
#include <QtWidgets/QLabel>

#include <functional>
#include <optional>

namespace zelvar {

/// Static text that is a link. It adds to the platform's label an address that a click, Enter or Space opens by the
/// desktop, the hand as pointer, a colour for links and another one for those visited, an underline under the mouse and
/// with the focus, a menu that opens or copies the address, and the role of a link for screen readers.
///
/// Only web pages, mail addresses and files are opened: an address may come out of somebody's data.
class ZELVAR_API HyperLink : public QLabel {
    Q_OBJECT

public:
    /// Opens an address; false if that failed.
    using Opener = std::function<bool(QUrl const &)>;

    explicit HyperLink(QWidget *parent = nullptr);

    [[nodiscard]] DString GetWindowText() const;
    void SetWindowText(DString const &text); ///< the address itself is shown as long as there is none
    [[nodiscard]] DString const &GetURL() const { return m_url; }
    /// An address with a scheme, or the full path of a file.
    void SetURL(DString const &url);
    [[nodiscard]] bool IsVisited() const { return m_visited; }
    void SetVisited(bool visited);
    /// In place of the desktop's.
    void SetColors(ColorRef link, ColorRef visited);
    /// As a click: visited if the address was opened.
    bool Open();

    /// Who opens addresses, for all links of the application; an empty one is the desktop again. User-interface thread.
    static void SetOpener(Opener opener);

Q_SIGNALS:
    /// After every attempt to open it.
    void Opened(bool done);

protected:
    /// `scheme` in lower case: http, https, mailto and file, unless an application knows better.
    [[nodiscard]] virtual bool MayOpen(DString const &scheme) const;

    void paintEvent(QPaintEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    bool event(QEvent *event) override;

private:
    [[nodiscard]] QUrl Target() const;
    void CopyAddress() const;

    DString m_url;
    bool m_ownText = false;
    bool m_visited = false;
    std::optional<QColor> m_color;
    std::optional<QColor> m_visitedColor;
};

} // namespace zelvar
