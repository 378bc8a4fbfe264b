#include "zelvar/opends/BasketStrip.h"

#include "zelvar/base/Directories.h"
#include "zelvar/base/Percent.h"
#include "zelvar/base/Report.h"
#include "zelvar/base/Translation.h"
#include "zelvar/controls/CZelButton.h"
#include "zelvar/opends/OpenLine.h"
#include "zelvar/opends/TextQuestion.h"
#include "zelvar/opends/basket/BasketDlg.h"
#include "zelvar/platform/ui/Announce.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QAccessible>
#include <QtGui/QShortcut>

#include <filesystem>
#include <utility>

namespace zelvar {

namespace {

/// Where a basket of that name is kept, beside the settings; the folder is made.
DString GetBasketFile(DString const &name) {
    DString const folder = std::filesystem::path(GetSettingsFile()).parent_path().string() + "/baskets";
    std::error_code ignored; // the file cannot be written then, which is told
    std::filesystem::create_directories(folder, ignored);
    return folder + "/" + PercentEncoded(name) + ".txt";
}

} // namespace

BasketStrip::BasketStrip(QWidget &dialog, OpenLine &line, MonikersOf monikersOf)
    : m_dialog(dialog), m_monikersOf(std::move(monikersOf)), m_button(new CZelButton) {
    m_button->setObjectName("basket");
    m_button->setFlat(true);
    m_button->setFocusPolicy(Qt::NoFocus); // the focus goes round the panes and the fields; this has a key
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
    m_button->setMinimumWidth(m_button->sizeHint().width() + 2 * m_button->fontMetrics().averageCharWidth());
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
    std::function<void(QWidget &)> keep;
    if (m_makeFavorite)
        keep = [this](QWidget &window) { Keep(window); };
    BasketDlg list(&m_dialog, m_basket, keep);
    list.DoModal();
}

void BasketStrip::Keep(QWidget &window) {
    std::optional<DString> const name = AskForText(&window, Mark("Add to Favorites"), Mark("Name"), "");
    if (!name || name->empty())
        return;
    DString const file = GetBasketFile(*name);
    if (m_basket.Save(file))
        m_makeFavorite(file, *name);
    else
        Report::UserNotification(Translated("The basket could not be written to '%s'"), file.c_str());
}

} // namespace zelvar
