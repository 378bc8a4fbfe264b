#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/layout/cdxCDynamicWnd.h"

namespace zelvar {

/// Dynamic window that remembers its position: saved when it is destroyed and restored when it is initialised, in the
/// profile under "WindowPositions".
class ZELVAR_API cdxCDynamicWndEx : public cdxCDynamicWnd {
public:
    using cdxCDynamicWnd::cdxCDynamicWnd;

    static char const *const M_lpszAutoPosProfileSection;

    /// The key under which the position is kept, "ID=0x%08lx" for a number. To be set before the window is initialised.
    void ActivateAutoPos(unsigned id);
    void ActivateAutoPos(DString const &key) { m_autoPosKey = key; }
    void NoAutoPos() { m_autoPosKey.clear(); }
    [[nodiscard]] DString const &AutoPosKey() const { return m_autoPosKey; }

    /// Makes the window larger by `by`, half on each side. False if nothing would be left of it.
    bool StretchWindow(Size const &by);
    /// By that share of its size with the border.
    bool StretchWindow(int percent);

    /// Writes position, visibility and state under the profile section `section`. A store that was interrupted counts
    /// as none.
    bool StoreWindowPosition(char const *section) const;
    enum RestoreFlags : unsigned { RestoreState = 1, RestoreVisibility = 2 };
    /// False, and the window left alone, if nothing usable is stored or the window would lie off every screen.
    bool RestoreWindowPosition(char const *section, unsigned flags);

protected:
    void OnInitialized() override;
    void OnDestroying() override;
    /// Shows or hides the window as a stored position tells. A host whose window is about to be shown anyway does
    /// nothing.
    virtual void DoShowWindow(bool show);

private:
    [[nodiscard]] DString ProfileSection() const;
    void CenterWindow();

    DString m_autoPosKey; ///< empty: the position is not remembered
};

} // namespace zelvar
