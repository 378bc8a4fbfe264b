#pragma once

#include "zelvar/opends/search/SearchDraft.h"

#include <QtWidgets/QWidget>

#include <map>
#include <vector>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;

namespace zelvar {

/// What a search asks for beside the name: fields in as many columns as there is room for. User-interface thread.
class FactsForm : public QWidget {
    Q_OBJECT

public:
    explicit FactsForm(QWidget *parent = nullptr);

    /// Fills in all but the name.
    void Read(SearchDraft &draft) const;
    void Fill(SearchDraft const &draft);
    /// Goes to the field.
    void FocusOn(SearchDraft::Fault const &fault) const;
    /// What can have the focus, in the order of the form.
    [[nodiscard]] std::vector<QWidget *> const &FocusOrder() const { return m_focusOrder; }

    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override;
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    struct BoundEdits {
        SearchDraft::Bounds SearchDraft::*field;
        QLineEdit *least;
        QLineEdit *most;
    };
    struct BoundWords;
    QWidget *AddCell(char const *label, std::vector<QWidget *> const &controls, char const *name);
    QComboBox *AddBox(char const *label, char const *name);
    void AddBounds(BoundWords const &words);
    QCheckBox *AddCheck(char const *label, char const *tip, char const *name);
    [[nodiscard]] QSize CellSize() const;
    [[nodiscard]] int ColumnsIn(int width) const;
    void AlignLabels();
    void Place();

    std::vector<QWidget *> m_cells; ///< children
    std::vector<QLabel *> m_labels;
    std::vector<QWidget *> m_focusOrder;
    std::vector<BoundEdits> m_bounds;
    QComboBox *m_kind = nullptr;
    QComboBox *m_type = nullptr;
    QLineEdit *m_format = nullptr;
    QCheckBox *m_inside = nullptr;
    QCheckBox *m_remote = nullptr;
};

} // namespace zelvar
