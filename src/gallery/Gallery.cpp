#include "zelvar/gallery/Gallery.h"

#include "zelvar/platform/ui/Text.h"

#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QStackedWidget>
#include <QtWidgets/QVBoxLayout>

namespace zelvar::gallery {

std::vector<Page> const &Pages() {
    static std::vector<Page> const pages = [] {
        std::vector<Page> all;
        for (auto const family :
             {ChartPages, ControlPages, ListPages, ThematicPages, DrawingPages, LayoutPages, BarPages, MessagePages})
            for (Page const &page : family())
                all.push_back(page);
        return all;
    }();
    return pages;
}

Gallery::Gallery()
    : m_search(new QLineEdit), m_list(new QListWidget), m_classes(new QLabel), m_pages(new QStackedWidget),
      m_made(Pages().size()) {
    setWindowTitle(platform::Shown("Gallery"));
    m_search->setPlaceholderText(platform::Shown("Search"));
    m_search->setAccessibleName(platform::Shown("Search"));
    m_search->setClearButtonEnabled(true);
    m_list->setAccessibleName(platform::Shown("Pages"));
    for (Page const &page : Pages())
        m_list->addItem(platform::Shown(page.title));
    m_list->setMaximumWidth(m_list->sizeHintForColumn(0) + 60);
    m_search->setMaximumWidth(m_list->maximumWidth());
    m_classes->setWordWrap(true);
    m_classes->setTextInteractionFlags(Qt::TextSelectableByMouse);
    connect(m_search, &QLineEdit::textChanged, this, &Gallery::Filter);
    connect(m_list, &QListWidget::currentRowChanged, this, &Gallery::ShowRow);

    auto *const left = new QVBoxLayout;
    left->addWidget(m_search);
    left->addWidget(m_list);
    auto *const right = new QVBoxLayout;
    right->addWidget(m_classes);
    right->addWidget(m_pages, 1);
    auto *const all = new QHBoxLayout(this);
    all->addLayout(left);
    all->addLayout(right, 1);
    resize(900, 600);
    m_list->setCurrentRow(0);
}

bool Gallery::ShowPage(DString const &name) {
    for (std::size_t i = 0; i < Pages().size(); ++i)
        if (name == Pages()[i].name) {
            m_list->setCurrentRow(static_cast<int>(i));
            return true;
        }
    return false;
}

void Gallery::Filter(QString const &text) {
    int first = -1;
    for (int row = 0; row < m_list->count(); ++row) {
        Page const &page = Pages()[static_cast<std::size_t>(row)];
        bool const fits = platform::Shown(page.title).contains(text.trimmed(), Qt::CaseInsensitive) ||
                          QString::fromUtf8(page.classes).contains(text.trimmed(), Qt::CaseInsensitive);
        m_list->item(row)->setHidden(!fits);
        first = fits && first < 0 ? row : first;
    }
    QListWidgetItem const *const current = m_list->currentItem();
    if (first >= 0 && (current == nullptr || current->isHidden()))
        m_list->setCurrentRow(first);
}

void Gallery::ShowRow(int row) {
    if (row < 0)
        return;
    auto const index = static_cast<std::size_t>(row);
    if (m_made[index] == nullptr) {
        m_made[index] = Pages()[index].make();
        m_pages->addWidget(m_made[index]);
    }
    m_classes->setText(QString::fromUtf8(Pages()[index].classes).replace(QLatin1Char(' '), QStringLiteral(", ")));
    m_pages->setCurrentWidget(m_made[index]);
}

} // namespace zelvar::gallery
