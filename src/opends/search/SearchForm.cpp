#include "zelvar/opends/search/SearchForm.h"

#include "zelvar/base/Translation.h"
#include "zelvar/opends/search/FactsForm.h"
#include "zelvar/platform/ui/EllipsisLabel.h"
#include "zelvar/platform/ui/HintColor.h"
#include "zelvar/platform/ui/Text.h"

#include <QtWidgets/QBoxLayout>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QScrollBar>

#include <algorithm>

namespace zelvar {

using platform::Shown;
using platform::ToQString;

namespace {

constexpr int kSpacing = 4;     // pixels
constexpr int kNameColumns = 8; // characters that the name keeps in a narrow window

} // namespace

SearchForm::SearchForm(QWidget *parent)
    : QWidget(parent), m_name(new QLineEdit(this)),
      m_factsButton(
          AddButton(Mark("Facts"), Mark("Search by kind, format, extent, type, size and date, too"), "facts")),
      m_searchButton(AddButton(Mark("Search"), Mark("Search below this place"), "search")),
      m_closeButton(AddButton(Mark("Close"), Mark("End the search and show the folder"), "close")),
      m_area(new QScrollArea(this)), m_facts(new FactsForm), m_line(new platform::EllipsisLabel(this)) {
    setObjectName(QStringLiteral("searchForm"));
    m_name->setObjectName(QStringLiteral("name"));
    m_name->setClearButtonEnabled(true);
    m_name->setMinimumWidth(m_name->fontMetrics().averageCharWidth() * kNameColumns);
    m_name->setToolTip(Shown("Part of a name, or a mask with * and ?; several between \";\""));
    m_factsButton->setCheckable(true);
    m_area->setWidget(m_facts);
    m_area->setWidgetResizable(true);
    m_area->setFrameShape(QFrame::NoFrame);
    m_area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_area->setFocusPolicy(Qt::NoFocus);
    m_line->setObjectName(QStringLiteral("line"));
    m_line->setAccessibleName(Shown("How far the search has come"));
    auto *const whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, kSpacing);
    whole->setSpacing(kSpacing);
    auto *const top = new QHBoxLayout;
    top->setSpacing(kSpacing);
    top->addWidget(m_name, 1);
    for (QPushButton *const button : {m_factsButton, m_searchButton, m_closeButton})
        top->addWidget(button);
    whole->addLayout(top);
    whole->addWidget(m_area);
    whole->addWidget(m_line);
    m_area->hide();
    m_line->hide();
    platform::KeepHintsReadable(*this);
    connect(m_factsButton, &QPushButton::toggled, this, &SearchForm::ShowFacts);
    connect(m_searchButton, &QPushButton::clicked, this, &SearchForm::SearchPressed);
    connect(m_closeButton, &QPushButton::clicked, this, &SearchForm::ClosePressed);
}

QPushButton *SearchForm::AddButton(char const *words, char const *tip, char const *name) {
    auto *const button = new QPushButton(Shown(words), this);
    button->setObjectName(QString::fromLatin1(name));
    button->setToolTip(Shown(tip));
    button->setAccessibleDescription(Shown(tip));
    button->setAutoDefault(false);
    return button;
}

void SearchForm::SetPlace(DString const &name) {
    QString const words =
        name.empty() ? Shown("Search") : ToQString(Format(Translated("Search below %s"), ToValidUtf8(name).c_str()));
    m_name->setPlaceholderText(words);
    m_name->setAccessibleName(words);
}

SearchDraft SearchForm::Draft() const {
    SearchDraft draft{.name = platform::ToDString(m_name->text())};
    m_facts->Read(draft);
    return draft;
}

void SearchForm::SetName(DString const &name) { m_name->setText(ToQString(name)); }

void SearchForm::SetDraft(SearchDraft const &draft) {
    SetName(draft.name);
    m_facts->Fill(draft);
    m_factsButton->setChecked(draft.HasFacts());
}

void SearchForm::ShowSearching(bool isSearching) {
    m_searchButton->setText(isSearching ? Shown("Stop") : Shown("Search"));
    m_searchButton->setToolTip(isSearching ? Shown("Stop and keep what was found") : Shown("Search below this place"));
    m_searchButton->setAccessibleDescription(m_searchButton->toolTip());
}

void SearchForm::ShowLine(DString const &words) {
    bool const isShown = !words.empty();
    m_line->SetText(ToQString(words).replace(u'\n', u' '));
    if (isShown == !m_line->isHidden())
        return;
    m_line->setVisible(isShown);
    Q_EMIT HeightChanged();
}

void SearchForm::ShowFault(SearchDraft::Fault const &fault) {
    m_factsButton->setChecked(true);
    ShowLine(fault.words);
    m_facts->FocusOn(fault);
}

void SearchForm::FocusOnName() {
    m_name->setFocus(Qt::ShortcutFocusReason);
    m_name->selectAll();
}

void SearchForm::ShowFacts(bool isShown) {
    m_area->setVisible(isShown);
    Q_EMIT HeightChanged();
}

int SearchForm::HeightFor(int width, int most) {
    int height = std::max(m_name->sizeHint().height(), m_searchButton->sizeHint().height()) + kSpacing;
    if (!m_line->isHidden())
        height += m_line->sizeHint().height() + kSpacing;
    if (m_area->isHidden())
        return height;
    int const least = m_facts->minimumSizeHint().height() + kSpacing;
    int const room = std::max(most - height - kSpacing, least);
    int wanted = m_facts->heightForWidth(width);
    if (wanted > room) // the bar takes some of the width
        wanted = m_facts->heightForWidth(width - m_area->verticalScrollBar()->sizeHint().width());
    int const area = std::min(wanted, room);
    m_area->setFixedHeight(area);
    return height + area + kSpacing;
}

std::vector<QWidget *> SearchForm::FocusOrder() const {
    std::vector<QWidget *> order{m_name, m_factsButton, m_searchButton, m_closeButton};
    order.insert(order.end(), m_facts->FocusOrder().begin(), m_facts->FocusOrder().end());
    return order;
}

} // namespace zelvar
