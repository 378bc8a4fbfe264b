#include "zelvar/thematic/ThematicDrawElement.h"

#include "zelvar/base/DFile.h"
#include "zelvar/controls/CZelImageList.h"
#include "zelvar/platform/ui/PaletteColors.h"
#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/Reading.h"
#include "zelvar/platform/ui/SystemColor.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QFile>
#include <QtGui/QFontMetrics>
#include <QtGui/QImageReader>
#include <QtGui/QPainter>

#include <utility>

namespace zelvar {

bool ThematicDrawElement::MouseEvent(EMouseEvnt event, Point const &point) {
    static_cast<void>(event), static_cast<void>(point);
    return false;
}

void ThematicBitmap::SetBitmap(QPixmap picture) {
    m_picture = std::move(picture);
    m_iconId.reset();
}

void ThematicBitmap::SetBitmap(char const *file) {
    QPixmap picture;
    if (file != nullptr && *file != '\0' && !DFile(file).IsDirectory())
        picture = QPixmap::fromImage(QImageReader(QFile::decodeName(file)).read());
    SetBitmap(std::move(picture));
}

void ThematicBitmap::SetBitmap(int iconId) {
    SetBitmap(QPixmap());
    if (iconId >= 0 && CZelImageList::FindIcon(static_cast<unsigned>(iconId)) != nullptr)
        m_iconId = static_cast<unsigned>(iconId);
}

void ThematicBitmap::Draw(QPainter &painter, bool) const {
    if (!IsAvailable())
        return;
    QRect const target(GetRect().left, GetRect().top, GetRect().Width(), GetRect().Height());
    QPixmap picture = m_picture;
    if (ImageDescription const *const icon = m_iconId ? CZelImageList::FindIcon(*m_iconId) : nullptr)
        picture = platform::Picture(*icon, painter.device()->devicePixelRatioF(), target.height());
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(target, picture);
    painter.restore();
}

void ThematicText::Draw(QPainter &painter, bool) const {
    if (!IsAvailable())
        return;
    QRect const area(GetRect().left, GetRect().top, GetRect().Width(), GetRect().Height());
    painter.save();
    painter.setPen(
        platform::ThemedInk(platform::ToQColor(platform::SystemColor(COLOR_BTNTEXT)), platform::Themed(kItemGrey)));
    QString const text = platform::ToQString(m_text);
    int const flags = platform::ReadingFlags(text, Qt::AlignLeft | Qt::AlignVCenter, painter.layoutDirection());
    painter.drawText(area, flags | Qt::TextSingleLine,
                     QFontMetrics(painter.font()).elidedText(text, Qt::ElideRight, area.width()));
    painter.restore();
}

} // namespace zelvar
