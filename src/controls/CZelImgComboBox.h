#pragma once

#include "zelvar/base/ImageList.h"
#include "zelvar/controls/CZelComboBox.h"

namespace zelvar {

/// Combo box with a picture in front of each entry, as extended combo boxes have it. It adds to `CZelComboBox` pictures
/// from an image list, another one for the entry that is selected in the list or shown in the field, and entries
/// indented under others, which the field shows without indentation.
class ZELVAR_API CZelImgComboBox : public CZelComboBox {
    Q_OBJECT

public:
    explicit CZelImgComboBox(QWidget *parent = nullptr);

    /// The list, which may be null, must outlive the control or be taken away.
    void SetImageList(HIMAGELIST list, int side = 16);
    /// The new entry's index. -1 for `image` leaves its room empty, for `selectedImage` means the same picture.
    /// `indent` counts steps of 10 pixels.
    int AddString(DString const &text, int image = -1, int selectedImage = -1, int indent = 0) {
        return InsertString(count(), text, image, selectedImage, indent);
    }
    int InsertString(int index, DString const &text, int image, int selectedImage = -1, int indent = 0);
    // All of these are false or -1 for an entry that does not exist.
    bool SetItemImage(int index, int image, int selectedImage = -1);
    [[nodiscard]] int GetItemImage(int index) const;
    [[nodiscard]] int GetItemSelectedImage(int index) const;
    bool SetItemIndent(int index, int indent);
    [[nodiscard]] int GetItemIndent(int index) const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void UpdateIcon(int index);

    HIMAGELIST m_list = nullptr; ///< not owned
};

} // namespace zelvar
