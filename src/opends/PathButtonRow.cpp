#include "zelvar/opends/PathButtonRow.h"

#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/Text.h"

#include <algorithm>

namespace zelvar {

namespace {

constexpr QRect kFirstPlace(0, 0, 100, 100);
constexpr int kMargin = 6; // pixels beside the text and the picture

} // namespace

PathButtonRow::PathButtonRow(QWidget *parent, CZelButton *measure, int firstId)
    : m_parent(parent), m_measure(measure), m_firstId(firstId) {}

int PathButtonRow::SetUp(CZelButton &button, DataSourceItem &item, bool cutBefore, bool cutBehind) {
    QPixmap picture;
    if (item.GetImageList() != nullptr && item.GetIconIndex() >= 0)
        picture = platform::ListPicture(item.GetImageList(), item.GetIconIndex(), button.devicePixelRatioF());
    button.setIcon(picture);
    button.setText(platform::ToShownName(PathButtonText(item.GetName(), cutBefore, cutBehind)).replace("&", "&&"));
    int const text = button.fontMetrics().size(Qt::TextShowMnemonic, button.text()).width();
    return text + 2 * kMargin + (picture.isNull() ? 0 : button.iconSize().width() + kMargin);
}

void PathButtonRow::Show(RefItemPtr<DataSourceItem> const &item, QRect const &place,
                         std::function<void(int id)> const &clicked) {
    std::vector<RefItemPtr<DataSourceItem>> chain;
    for (RefItemPtr<DataSourceItem> at = item; at != nullptr; at = at->GetParent())
        chain.push_back(at);
    std::reverse(chain.begin(), chain.end());

    std::vector<PathButton> const row =
        ArrangePathButtons(chain.size(), place.width(), [&](std::size_t entry, bool cutBefore, bool cutBehind) {
            return SetUp(*m_measure, *chain[entry], cutBefore, cutBehind);
        });
    while (m_buttons.size() < row.size()) {
        auto *button = new DSButton(m_parent);
        button->setGeometry(kFirstPlace);
        button->hide();
        button->setFlat(true);
        int const id = m_firstId + static_cast<int>(m_buttons.size());
        platform::SetDlgCtrlID(*button, id);
        QObject::connect(button, &QAbstractButton::clicked, m_parent, [clicked, id] { clicked(id); });
        m_buttons.push_back(button);
    }
    for (std::size_t i = 0; i < row.size(); ++i) {
        DSButton &button = *m_buttons[i];
        RefItemPtr<DataSourceItem> const &entry = chain[row[i].entry];
        SetUp(button, *entry, row[i].cutBefore, row[i].cutBehind);
        button.setToolTip(platform::ToToolTip(platform::ToShownName(entry->GetName())));
        button.setAccessibleName(platform::ToShownName(entry->GetName()));
        button.setGeometry(place.left() + row[i].left, place.top(), row[i].width, place.height());
        button.item = entry;
        button.show();
    }
    for (std::size_t i = row.size(); i < m_buttons.size(); ++i)
        m_buttons[i]->hide();
    m_shown = row.size();
}

RefItemPtr<DataSourceItem> PathButtonRow::ItemOf(int id) const {
    int const index = id - m_firstId;
    return index >= 0 && index < static_cast<int>(m_buttons.size()) ? m_buttons[static_cast<std::size_t>(index)]->item
                                                                    : nullptr;
}

RefItemPtr<DataSourceItem> PathButtonRow::LastShown() const {
    return m_shown == 0 ? nullptr : m_buttons[m_shown - 1]->item;
}

} // namespace zelvar
