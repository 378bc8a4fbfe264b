#include "zelvar/opends/PreviewBar.h"

#include "zelvar/base/Translation.h"
#include "zelvar/opends/ValueScale.h"
#include "zelvar/opends/WrapLayout.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QSignalBlocker>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QSpinBox>
#include <QtWidgets/QVBoxLayout>

#include <algorithm>
#include <utility>

namespace zelvar {

using platform::Shown;

namespace {

constexpr int kSpacing = 4; // pixels
constexpr int kColors = 3;  // channels that make a picture in colours

/// Chosen by the place in the box.
constexpr PreviewChoice::Stretch kStretches[] = {PreviewChoice::Stretch::Usual, PreviewChoice::Stretch::Full,
                                                 PreviewChoice::Stretch::Most};

} // namespace

PreviewBar::PreviewBar(QWidget *parent)
    : QWidget(parent), m_choosers(new QWidget(this)),
      m_channel(AddNumber(Mark("C&hannel"), Mark("Which channel is shown, or the first ones as colours"))),
      m_slice(AddNumber(Mark("S&lice"), Mark("Which slice is shown"))),
      m_frame(AddNumber(Mark("Fra&me"), Mark("Which time frame is shown"))), m_stretch(new QComboBox(m_choosers)),
      m_scale(new ValueScale(this)) {
    m_stretch->addItems({Shown("Usual"), Shown("Full range"), Shown("2 to 98 %")});
    AddToLine(m_stretch, Mark("St&retch"), Mark("Which values are shown as black and as white"));
    connect(m_stretch, &QComboBox::currentIndexChanged, this, &PreviewBar::TakeChoice);
    auto *const lines = new QVBoxLayout(this);
    lines->setContentsMargins(kSpacing, kSpacing, kSpacing, kSpacing);
    lines->setSpacing(kSpacing);
    lines->addWidget(m_scale);
    lines->addWidget(m_choosers);
    hide();
}

void PreviewBar::AddToLine(QWidget *control, char const *caption, char const *tip) {
    if (m_choosers->layout() == nullptr)
        m_choosers->setLayout(new WrapLayout(kSpacing));
    auto *const label = new QLabel(Shown(caption), m_choosers);
    label->setBuddy(control);
    control->setToolTip(Shown(tip));
    control->setAccessibleName(Shown(caption).remove(u'&'));
    control->setAccessibleDescription(Shown(tip));
    m_choosers->layout()->addWidget(label);
    m_choosers->layout()->addWidget(control);
}

QSpinBox *PreviewBar::AddNumber(char const *caption, char const *tip) {
    auto *const number = new QSpinBox(m_choosers);
    number->setKeyboardTracking(false); // what is typed counts when it is complete
    number->setAccelerated(true);
    AddToLine(number, caption, tip);
    connect(number, &QSpinBox::valueChanged, this, &PreviewBar::TakeChoice);
    return number;
}

void PreviewBar::SetNumbers(QSpinBox &number, int first, int count) {
    QSignalBlocker const blocker(number);
    number.setRange(first, std::max(count, 1));
    number.setSuffix(QStringLiteral(" / %1").arg(count));
    number.setValue(first);
    auto *const line = static_cast<WrapLayout *>(m_choosers->layout());
    bool const isChoice = count > 1;
    number.setVisible(isChoice);
    line->itemAt(line->indexOf(&number) - 1)->widget()->setVisible(isChoice); // its caption
}

void PreviewBar::Reset() {
    // The controls stay enabled: a screen reader would tell of each, at every file that is looked through.
    m_isKnown = false;
    ShowDefaults(m_extent);
    m_scale->Show({});
}

void PreviewBar::ShowExtent(ImageExtent const &extent) {
    m_extent = extent;
    m_isKnown = true;
    ShowDefaults(extent);
    m_choosers->setVisible(extent.channels > 1 || extent.slices > 1 || extent.frames > 1);
    setVisible(extent.channels > 0);
}

void PreviewBar::ShowDefaults(ImageExtent const &extent) {
    m_choice = {};
    bool const hasColors = extent.channels >= kColors;
    m_channel->setSpecialValueText(hasColors ? Shown("Colours") : QString()); // in place of the least number
    SetNumbers(*m_channel, hasColors ? 0 : 1, extent.channels);
    SetNumbers(*m_slice, 1, extent.slices);
    SetNumbers(*m_frame, 1, extent.frames);
    QSignalBlocker const blocker(m_stretch);
    m_stretch->setCurrentIndex(0);
}

void PreviewBar::TakeChoice() {
    if (!m_isKnown)
        return ShowDefaults(m_extent);
    PreviewChoice choice{.slice = m_slice->value() - 1,
                         .frame = m_frame->value() - 1,
                         .stretch = kStretches[std::max(m_stretch->currentIndex(), 0)]};
    if (m_extent.channels > 1 && m_channel->value() > 0)
        choice.channel = m_channel->value() - 1;
    if (choice == m_choice)
        return;
    m_choice = choice;
    m_scale->Show({});
    Q_EMIT Chosen();
}

void PreviewBar::ShowValues(PreviewValues values) { m_scale->Show(std::move(values)); }

void PreviewBar::PointAt(double x, double y) { m_scale->PointAt(x, y); }

void PreviewBar::keyPressEvent(QKeyEvent *event) {
    // Return ends what is typed here, and not the dialog.
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        event->accept();
    else
        QWidget::keyPressEvent(event);
}

} // namespace zelvar
