#include "zelvar/opends/connections/TrialPane.h"

#include "zelvar/base/Translation.h"
#include "zelvar/lists/CZelListCtrl.h"
#include "zelvar/platform/ui/ModalLoop.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QRegularExpression>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtGui/QShortcut>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMenu>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>

#include <algorithm>
#include <array>

namespace zelvar {

namespace {

constexpr int kSpacing = 3;    // pixels
constexpr int kWordsLines = 2; // of room for the words below

QString Milliseconds(TrialResult const &result) {
    return result.took.count() == 0 ? QString() : QString::number(result.took.count());
}

} // namespace

char const *TrialStateInWords(TrialState state) {
    static constexpr std::array kWords{Mark("works"), Mark("failed"), Mark("stopped")};
    return Translated(kWords.at(static_cast<std::size_t>(state)));
}

TrialPane::TrialPane(QWidget *parent)
    : QWidget(parent), m_list(new CZelListCtrl(this)), m_words(new QLabel(this)), m_offer(new QPushButton(this)) {
    auto *const whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->setSpacing(kSpacing);
    whole->addWidget(m_list, 1);
    whole->addWidget(m_words);
    whole->addWidget(m_offer, 0, Qt::AlignLeft);
    m_offer->setAutoDefault(false);
    m_offer->hide();
    connect(m_offer, &QPushButton::clicked, this, &TrialPane::TakeOffer);
    std::vector<QString> steps{platform::Shown("Step")};
    for (int step = 0; step <= static_cast<int>(TrialStep::FirstItem); ++step)
        steps.push_back(platform::ToQString(TrialStepInWords(static_cast<TrialStep>(step))));
    std::vector<QString> outcomes{platform::Shown("Outcome")};
    for (TrialState const state : {TrialState::Works, TrialState::Failed, TrialState::Stopped})
        outcomes.push_back(platform::ToQString(TrialStateInWords(state)));
    m_list->AddCol(Translated("Step"), ADICol_String, false, WidthOf(steps), LVCFMT_LEFT);
    m_list->AddCol(Translated("Outcome"), ADICol_String, false, WidthOf(outcomes), LVCFMT_LEFT);
    m_list->AddCol("ms", ADICol_Int, false, WidthOf({QStringLiteral("00000")}), LVCFMT_CENTER);
    m_list->AddCol(Translated("What was found"), ADICol_String, false, 100, LVCFMT_LEFT);
    m_list->SetMultiSlct(false);
    m_list->SetExtendedStyle(m_list->GetExtendedStyle() | LVS_EX_FULLROWSELECT | LVS_EX_LABELTIP);
    m_list->setAccessibleName(platform::Shown("Steps of the test"));
    m_words->setTextFormat(Qt::PlainText);
    m_words->setWordWrap(true);
    m_words->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    m_words->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_words->setMinimumHeight(m_words->fontMetrics().lineSpacing() * kWordsLines);
    connect(m_list, &ReportView::ItemChanged, this, [this](int, unsigned, unsigned state) {
        if ((state & LVIS_SELECTED) != 0)
            ShowSelected();
    });
    connect(m_list, &ReportView::ContextMenu, this, &TrialPane::RunMenu);
    auto *const copy = new QShortcut(QKeySequence::Copy, m_list, nullptr, nullptr, Qt::WidgetWithChildrenShortcut);
    connect(copy, &QShortcut::activated, this, &TrialPane::Copy);
}

void TrialPane::showEvent(QShowEvent *event) {
    QWidget::showEvent(event);
    m_list->EnlargeCol(3, true); // the list has its place by now
}

int TrialPane::WidthOf(std::vector<QString> const &words) const {
    constexpr int margins = 16; // of a cell and of its heading, both sides
    int width = 0;
    for (QString const &word : words)
        width = std::max(width, fontMetrics().horizontalAdvance(word) + margins);
    return width;
}

void TrialPane::Clear(char const *words) {
    m_list->RmvAllRow();
    m_results.clear();
    ShowOffer();
    SayBelow(Translated(words));
}

void TrialPane::Add(TrialResult const &result) {
    m_results.push_back(result);
    int const row = m_list->AddRow();
    m_list->SetText(row, 0, TrialStepInWords(result.step));
    m_list->SetText(row, 1, TrialStateInWords(result.state));
    m_list->SetText(row, 2, platform::ToDString(Milliseconds(result)));
    m_list->SetText(row, 3, result.words);
    m_list->ClearSlct();
    m_list->SetItemState(row, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    m_list->EnsureVisible(row);
    ShowSelected();
    ShowOffer();
}

void TrialPane::ShowOffer() {
    TrialResult const last = m_results.empty() ? TrialResult() : m_results.back();
    if (!last.accepts.empty())
        m_offer->setText(platform::Shown("Accept This Certificate"));
    else if (last.allows)
        m_offer->setText(platform::ToQString(Format(Translated("Allow %s"), TextOf(*last.allows).c_str())));
    m_offer->setVisible(!last.accepts.empty() || last.allows.has_value());
}

void TrialPane::TakeOffer() {
    if (m_results.empty())
        return;
    TrialResult const last = m_results.back(); // whoever is told begins anew
    if (!last.accepts.empty())
        Q_EMIT CertificateAccepted(last.accepts);
    else if (last.allows)
        Q_EMIT HostAllowed(TextOf(*last.allows));
}

void TrialPane::ShowSelected() {
    int const row = m_list->GetCrntSlct();
    if (row >= 0 && row < static_cast<int>(m_results.size()))
        SayBelow(m_results[static_cast<std::size_t>(row)].words);
}

void TrialPane::SayBelow(DString const &words) {
    QString text = platform::ToQString(words);
    m_words->setToolTip(platform::ToToolTip(text)); // it may be longer than its place
    // A fingerprint is one long word: lines may end behind its colons.
    static QRegularExpression const pairs(QStringLiteral("(?<=[0-9A-F]{2}:)(?=[0-9A-F]{2})"));
    m_words->setText(text.replace(pairs, QStringLiteral("\u200B")));
}

DString TrialPane::Text() const {
    DString text;
    for (TrialResult const &result : m_results)
        text += Format("%s\t%s\t%lld\t%s\n", TrialStepInWords(result.step), TrialStateInWords(result.state),
                       static_cast<long long>(result.took.count()), result.words.c_str());
    return text;
}

void TrialPane::Copy() const {
    if (!m_results.empty())
        QGuiApplication::clipboard()->setText(platform::ToQString(Text()));
}

void TrialPane::RunMenu(QPoint screenPoint) {
    QMenu menu(m_list);
    QAction *const copy = menu.addAction(platform::Shown("Copy"));
    copy->setEnabled(!m_results.empty());
    QAction const *const offer = m_offer->isHidden() ? nullptr : menu.addAction(m_offer->text());
    QAction const *const chosen = platform::RunMenu(menu, screenPoint);
    if (chosen == copy)
        Copy();
    else if (chosen != nullptr && chosen == offer)
        TakeOffer();
}

} // namespace zelvar
