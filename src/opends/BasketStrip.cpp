#include "zelvar/opends/BasketStrip.h"

#include "zelvar/base/Translation.h"
#include "zelvar/controls/CZelButton.h"
#include "zelvar/opends/OpenLine.h"
#include "zelvar/opends/basket/BasketDlg.h"
#include "zelvar/platform/ui/Announce.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QAccessible>
#include <QtGui/QShortcut>

#include <utility>

namespace zelvar {

BasketStrip::BasketStrip(QWidget &dialog, OpenLine &line, MonikersOf monikersOf)
    : m_dialog(dialog), m_monikersOf(std::move(monikersOf)), m_button(new CZelButton) {
    m_button->setObjectName("basket");
    m_button->setFlat(true);
    m_button->SetImage("basket");
    m_button->setToolTip(platform::Shown("Insert keeps what is selected in the basket; Ctrl+B shows what is in it. OK "
                                         "opens all of it, in its order."));
    line.AddAtEnd(m_button);
    connect(m_button, &QAbstractButton::clicked, this, &BasketStrip::Open);
    auto *const shortcut = new QShortcut(Qt::CTRL | Qt::Key_B, &dialog);
    connect(shortcut, &QShortcut::activated, this, &BasketStrip::Open);
    Show();
}

BasketStrip::~BasketStrip() = default;

void BasketStrip::Show() {
    QString const text = m_basket.IsEmpty()
                             ? platform::Shown("Basket is empty")
                             : platform::Shown("Basket: %1").arg(platform::ToQString(m_basket.Summary()));
    m_button->setText(text);
    m_button->setAccessibleName(text);
    QAccessibleEvent event(m_button, QAccessible::NameChanged);
    platform::Announce(event);
}

void BasketStrip::Add(ItemList const &items) {
    Basket::Entries entries;
    for (RefItemPtr<DataSourceItem> const &item : items) {
        RefItemPtr<DataSourceItem> const parent = item->GetParent();
        entries.push_back({.monikers = m_monikersOf(*item),
                           .name = item->GetName(),
                           .place = parent == nullptr ? DString() : parent->GetPath(),
                           .bytes = item->GetFileSize()});
        if (entries.back().monikers.empty())
            entries.pop_back();
    }
    m_basket.Add(std::move(entries));
}

void BasketStrip::Open() {
    BasketDlg list(&m_dialog, m_basket);
    list.DoModal();
}

} // namespace zelvar
