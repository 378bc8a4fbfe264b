#include "zelvar/tool/Gallery.h"

#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QStackedWidget>
#include <QtWidgets/QVBoxLayout>

namespace zelvar::tool {

std::vector<GalleryPage> const &GalleryPages() {
    static std::vector<GalleryPage> const pages{
        {"plot", "X/Y plot", MakePlotPage},
        {"histogram", "Histogram", MakeHistogramPage},
        {"thematic", "Thematic list", MakeThematicPage},
    };
    return pages;
}

Gallery::Gallery()
    : m_search(new QLineEdit), m_list(new QListWidget), m_pages(new QStackedWidget), m_made(GalleryPages().size()) {
    setWindowTitle(QStringLiteral("Gallery"));
    m_search->setPlaceholderText(QStringLiteral("Search"));
    m_search->setClearButtonEnabled(true);
    m_list->setAccessibleName(QStringLiteral("Pages"));
    for (GalleryPage const &page : GalleryPages())
        m_list->addItem(QString::fromUtf8(page.title));
    m_list->setMaximumWidth(m_list->sizeHintForColumn(0) + 60);
    m_search->setMaximumWidth(m_list->maximumWidth());
    connect(m_search, &QLineEdit::textChanged, this, &Gallery::Filter);
    connect(m_list, &QListWidget::currentRowChanged, this, &Gallery::ShowRow);

    auto *const left = new QVBoxLayout;
    left->addWidget(m_search);
    left->addWidget(m_list);
    auto *const all = new QHBoxLayout(this);
    all->addLayout(left);
    all->addWidget(m_pages, 1);
    resize(900, 600);
    m_list->setCurrentRow(0);
}

bool Gallery::ShowPage(DString const &name) {
    for (std::size_t i = 0; i < GalleryPages().size(); ++i)
        if (name == GalleryPages()[i].name) {
            m_list->setCurrentRow(static_cast<int>(i));
            return true;
        }
    return false;
}

void Gallery::Filter(QString const &text) {
    int first = -1;
    for (int row = 0; row < m_list->count(); ++row) {
        bool const fits = m_list->item(row)->text().contains(text.trimmed(), Qt::CaseInsensitive);
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
    auto const page = static_cast<std::size_t>(row);
    if (m_made[page] == nullptr) {
        m_made[page] = GalleryPages()[page].make();
        m_pages->addWidget(m_made[page]);
    }
    m_pages->setCurrentWidget(m_made[page]);
}

} // namespace zelvar::tool
