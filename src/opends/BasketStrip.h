#pragma once

#include "zelvar/model/DataSourceItem.h"
#include "zelvar/opends/basket/Basket.h"

#include <QtCore/QObject>

#include <list>

class QWidget;

namespace zelvar {

class CZelButton;
class OpenLine;

/// The open dialog's basket: what was gathered in it, and at the foot the button that tells how much that is and opens
/// its list. User-interface thread.
class BasketStrip : public QObject {
    Q_OBJECT

public:
    using ItemList = std::list<RefItemPtr<DataSourceItem>>;
    /// What opens an item, with the options that are set; several for a series that is given file by file.
    using MonikersOf = std::function<std::vector<BDIMoniker>(DataSourceItem const &item)>;

    /// The button becomes part of the line at the foot of `dialog`; both outlive this.
    BasketStrip(QWidget &dialog, OpenLine &line, MonikersOf monikersOf);
    ~BasketStrip() override;

    void Add(ItemList const &items);
    /// Adds what a file of monikers names; false if it is none.
    bool Load(DString const &file) { return m_basket.Load(file); }
    /// Makes a favourite of the file that a basket was written to; without it baskets are none.
    void SetFavoriteMaker(std::function<void(DString const &file, DString const &name)> maker) {
        m_makeFavorite = std::move(maker);
    }
    /// Runs the list of what is in it.
    void Open();
    void Show(); ///< what is in it now
    [[nodiscard]] Basket &Content() { return m_basket; }
    [[nodiscard]] CZelButton *Button() const { return m_button; }

private:
    void Keep(QWidget &window);
    QWidget &m_dialog;
    MonikersOf m_monikersOf;
    std::function<void(DString const &, DString const &)> m_makeFavorite;
    Basket m_basket;
    CZelButton *m_button; ///< a child of the line
};

} // namespace zelvar
