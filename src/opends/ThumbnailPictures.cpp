#include "zelvar/opends/ThumbnailPictures.h"

#include <QtGui/QImage>

namespace zelvar {

namespace {

constexpr qsizetype kBytesBeside = 512; // of an entry, about: those without a picture are not for nothing either

qsizetype BytesOf(QPixmap const &pixmap) { return kBytesBeside + qsizetype{4} * pixmap.width() * pixmap.height(); }

} // namespace

ThumbnailPictures::Picture const *ThumbnailPictures::Find(DString const &name) {
    auto const at = m_places.find(name);
    if (at == m_places.end())
        return nullptr;
    m_entries.splice(m_entries.begin(), m_entries, at->second);
    return &at->second->picture;
}

void ThumbnailPictures::Keep(DString const &name, int side, DCanvas const &canvas, qreal devicePixelRatio) {
    if (auto const former = m_places.find(name); former != m_places.end())
        Drop(former->second);
    QPixmap pixmap;
    if (canvas.HasData()) {
        pixmap = QPixmap::fromImage(QImage(canvas.Row(0), canvas.GetWidth(), canvas.GetHeight(),
                                           qsizetype{3} * canvas.GetWidth(), QImage::Format_RGB888));
        pixmap.setDevicePixelRatio(devicePixelRatio);
    }
    m_bytes += BytesOf(pixmap);
    m_entries.push_front({name, {std::move(pixmap), side}});
    m_places[name] = m_entries.begin();
    while (m_bytes > m_most && m_entries.size() > 1)
        Drop(std::prev(m_entries.end()));
}

void ThumbnailPictures::Drop(Entries::iterator entry) {
    m_bytes -= BytesOf(entry->picture.pixmap);
    m_places.erase(entry->name);
    m_entries.erase(entry);
}

void ThumbnailPictures::Clear() {
    m_entries.clear();
    m_places.clear();
    m_bytes = 0;
}

} // namespace zelvar
