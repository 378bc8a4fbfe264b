#pragma once

#include "zelvar/base/ImageList.h"
#include "zelvar/controls/CZelTabCtrl.h"

namespace zelvar {

/// Tab window with a picture on each tab. It adds to `CZelTabCtrl` pictures from an image list, beside the labels or in
/// place of them; a label that is not shown is the tab's tip and its name for those who cannot see the picture.
class ZELVAR_API IconTabCtrl : public CZelTabCtrl {
    Q_OBJECT

public:
    explicit IconTabCtrl(QWidget *parent = nullptr);

    /// The list, which may be null, must outlive the control or be taken away.
    void SetImageList(HIMAGELIST list, int side = 16);
    /// `image` is an index of the image list, -1 for no picture.
    int AddTab(QWidget *page, DString const &label, int image = -1) {
        return InsertTab(page, label, GetTabsNum(), image);
    }
    int InsertTab(QWidget *page, DString const &label, int index, int image = -1);
    bool SetTabImage(int index, int image);
    [[nodiscard]] int GetTabImage(int index) const;              ///< -1 for none
    [[nodiscard]] DString GetTabLabel(int index) const override; ///< shown or not
    bool SetTabLabel(int index, DString const &label) override;
    /// Without labels only tabs without a picture keep theirs.
    void ShowLabels(bool show);
    [[nodiscard]] bool AreLabelsShown() const { return m_labels; }

private:
    void UpdateTab(int index);
    void UpdateTabs();

    HIMAGELIST m_list = nullptr; ///< not owned
    bool m_labels = true;
};

} // namespace zelvar
