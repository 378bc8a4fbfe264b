#pragma once

#include "zelvar/dialogs/DlgFltrFind.h"

#include <QtCore/QAbstractListModel>

namespace zelvar {

/// The lines of "Filter & Find", their texts made when they are seen.
class FilterFindModel : public QAbstractListModel {
public:
    using QAbstractListModel::QAbstractListModel;

    void SetItems(DVector<DlgFltrFind::Item *> items) {
        beginResetModel();
        m_items = std::move(items);
        endResetModel();
    }
    [[nodiscard]] DlgFltrFind::Item *ItemAt(int row) const { return m_items[static_cast<std::size_t>(row)]; }

    [[nodiscard]] int rowCount(QModelIndex const &parent = {}) const override {
        return parent.isValid() ? 0 : static_cast<int>(m_items.size());
    }
    [[nodiscard]] QVariant data(QModelIndex const &index, int role) const override;

private:
    DVector<DlgFltrFind::Item *> m_items; ///< not owned
};

} // namespace zelvar
