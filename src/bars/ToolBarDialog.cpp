#include "zelvar/bars/ToolBarDialog.h"

#include "zelvar/bars/CZelToolBar.h"
#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/xml/XMLNode.h"

#include <QtWidgets/QCheckBox>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>

namespace zelvar {

namespace {

constexpr int kIdRole = Qt::UserRole; // 0 for a separator

} // namespace

ToolBarDialog::ToolBarDialog(CZelToolBar const &bar, XMLNode const &designed, QWidget *parent)
    : QDialog(parent), m_elements(new QListWidget), m_large(new QCheckBox(platform::Shown("&Large icons"))),
      m_up(new QPushButton(platform::Shown("Move &up"))), m_down(new QPushButton(platform::Shown("Move &down"))) {
    setWindowTitle(platform::Shown("Customize %1").arg(bar.windowTitle()));
    m_elements->setAccessibleName(platform::Shown("Buttons"));
    m_elements->setDragDropMode(QAbstractItemView::InternalMove);
    m_large->setChecked(bar.iconSize().width() > platform::kSmallPicture);
    auto *const reset = new QPushButton(platform::Shown("&Reset"));
    auto *const answers = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    auto *const side = new QVBoxLayout;
    for (QPushButton *const button : {m_up, m_down, reset}) {
        button->setAutoDefault(false);
        side->addWidget(button);
    }
    side->addStretch();
    auto *const upper = new QHBoxLayout;
    upper->addWidget(m_elements);
    upper->addLayout(side);
    auto *const all = new QVBoxLayout(this);
    all->addLayout(upper);
    all->addWidget(m_large);
    all->addWidget(answers);
    for (int i = 0; i < bar.GetCount(); ++i)
        if (QAction const *const button = bar.actions()[i]; !button->isSeparator())
            m_names[bar.GetItemID(i)] = {button->iconText(), button->icon()};
    XMLNode now("TOOLBAR");
    bar.SaveButtons(now);
    Fill(now);
    DString const arrangement = designed.SaveText();
    connect(reset, &QPushButton::clicked, this, [this, arrangement] {
        XMLNode first;
        if (first.LoadText(arrangement))
            Fill(first);
        m_large->setChecked(false);
    });
    connect(m_up, &QPushButton::clicked, this, [this] { Move(-1); });
    connect(m_down, &QPushButton::clicked, this, [this] { Move(1); });
    connect(m_elements, &QListWidget::currentRowChanged, this, &ToolBarDialog::UpdateButtons);
    connect(answers, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(answers, &QDialogButtonBox::rejected, this, &QDialog::reject);
    UpdateButtons();
}

void ToolBarDialog::Fill(XMLNode const &arrangement) {
    m_elements->clear();
    for (XMLNode const *element = arrangement.GetFirstChild(); element != nullptr; element = element->GetNext()) {
        auto const id = static_cast<int>(element->GetAttrInt("id", 0));
        auto *const row = new QListWidgetItem(m_elements);
        row->setData(kIdRole, id);
        if (element->GetName() == "SEPARATOR") {
            row->setText(platform::Shown("Separator"));
            row->setForeground(palette().brush(QPalette::Disabled, QPalette::Text));
            continue;
        }
        if (m_names.contains(id)) {
            row->setText(m_names[id].first);
            row->setIcon(m_names[id].second);
        }
        row->setCheckState(element->GetAttrBool("visible", true) ? Qt::Checked : Qt::Unchecked);
    }
    m_elements->setCurrentRow(0);
}

void ToolBarDialog::Move(int by) {
    int const row = m_elements->currentRow(); // its button can be pressed: there is a place to go to
    m_elements->insertItem(row + by, m_elements->takeItem(row));
    m_elements->setCurrentRow(row + by);
}

void ToolBarDialog::UpdateButtons() {
    int const row = m_elements->currentRow();
    m_up->setEnabled(row > 0);
    m_down->setEnabled(row >= 0 && row + 1 < m_elements->count());
}

void ToolBarDialog::SaveButtons(XMLNode &bar) const {
    for (int row = 0; row < m_elements->count(); ++row) {
        QListWidgetItem const &item = *m_elements->item(row);
        bool const isButton = item.data(Qt::CheckStateRole).isValid();
        XMLNode *const element = bar.AddChld(isButton ? "BUTTON" : "SEPARATOR");
        if (!isButton)
            continue;
        element->SetAttrInt("id", item.data(kIdRole).toInt());
        element->SetAttrBool("visible", item.checkState() == Qt::Checked);
    }
}

bool ToolBarDialog::WantsLargeIcons() const { return m_large->isChecked(); }

} // namespace zelvar
