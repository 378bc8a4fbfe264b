#include "zelvar/lists/ReadProgress.h"

#include "zelvar/base/Translation.h"

#include <algorithm>

namespace zelvar {

namespace {

constexpr std::chrono::milliseconds kMoment{300};
constexpr int kWhole = 1000;
constexpr int kMargin = 6; // pixels
constexpr int kWidest = 320;

} // namespace

void ReadProgress::Show(int progress) {
    if (progress < 0 || !m_list.isVisible() || std::chrono::steady_clock::now() - m_since < kMoment)
        return;
    if (m_bar == nullptr) {
        m_bar = new QProgressBar(&m_list);
        m_bar->setRange(0, kWhole);
        m_bar->setFormat(QStringLiteral("%p % - ") + QString::fromUtf8(Translated("Escape stops")));
        m_bar->setAlignment(Qt::AlignCenter);
        m_bar->setAutoFillBackground(true);
        int const width = std::min(kWidest, m_list.width() - 2 * kMargin);
        int const height = m_bar->sizeHint().height();
        m_bar->setGeometry((m_list.width() - width) / 2, m_list.height() - height - kMargin, width, height);
        m_bar->show();
    }
    int const value = static_cast<int>(m_begin * kWhole + (m_end - m_begin) * progress);
    m_bar->setValue(std::max(value, m_bar->value()));
}

} // namespace zelvar
