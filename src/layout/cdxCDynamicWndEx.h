#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/layout/cdxCDynamicWnd.h"

namespace zelvar {

/// Dynamic window, extended: remembers where the window stood.
///
/// The position lies in the application's profile, in a section "WindowPositions\<key>" of its own, and only with a
/// key. Rectangles are those of the client area on the screen.
class ZELVAR_API cdxCDynamicWndEx : public cdxCDynamicWnd {
public:
    enum RestoreFlags : unsigned { RestoreState = 1, RestoreVisibility = 2 };

    explicit cdxCDynamicWndEx(Freedom freedom = FreedomAll, unsigned flags = kDefaultFlags)
        : cdxCDynamicWnd(freedom, flags) {}
    ~cdxCDynamicWndEx() override;

    /// Remembers the position under the text "ID=0x%08lx" of the id, or under the text given.
    void ActivateAutoPos(unsigned id);
    void ActivateAutoPos(DString const &key) { m_autoPosKey = key; }
    void NoAutoPos() { m_autoPosKey.clear(); }

    /// Makes the window bigger around its centre. False if nothing would be left of it.
    bool StretchWindow(Size growth);
    /// By that share of its present size on each axis.
    bool StretchWindow(int percent);
    bool StoreWindowPosition(char const *section) const;
    /// False, and nothing moved, if nothing whole is stored or the place lies on no screen.
    bool RestoreWindowPosition(char const *section, unsigned flags);

    static char const *const M_lpszAutoPosProfileSection;

protected:
    void OnInitialized() override;
    void OnDestroying() override;

    DString m_autoPosKey; ///< empty: the position is not remembered

private:
    [[nodiscard]] DString Section() const;
    [[nodiscard]] Rect NormalRect() const;
    void CenterWindow();
};

} // namespace zelvar
