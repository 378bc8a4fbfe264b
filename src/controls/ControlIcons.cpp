#include "zelvar/controls/ControlIcons.h"

#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/SystemColor.h"

#include <QtGui/QIconEngine>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>
#include <QtWidgets/QStyle>
#include <QtWidgets/QStyleOption>

#include <algorithm>

namespace zelvar {

namespace {

/// The base class's own pixmaps start with whatever the memory held.
class ClearEngine : public QIconEngine {
public:
    QPixmap pixmap(QSize const &size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap picture(size);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return picture;
    }
};

class ListEngine final : public ClearEngine {
public:
    ListEngine(HIMAGELIST list, int image, int selectedImage)
        : m_list(list), m_image(image), m_selectedImage(selectedImage) {}
    void paint(QPainter *painter, QRect const &rect, QIcon::Mode mode, QIcon::State) override {
        int const side = std::min(rect.width(), rect.height());
        QPixmap const picture = platform::ListPicture(m_list, mode == QIcon::Selected ? m_selectedImage : m_image,
                                                      painter->device()->devicePixelRatioF(), side);
        if (!picture.isNull())
            painter->drawPixmap(rect.left() + (rect.width() - side) / 2, rect.top() + (rect.height() - side) / 2,
                                mode == QIcon::Disabled ? WashedOut(picture) : picture);
    }
    /// A square even where a list gives it more room in front: that is how entries are indented.
    QSize actualSize(QSize const &size, QIcon::Mode, QIcon::State) override {
        int const side = std::min(size.width(), size.height());
        return {side, side};
    }
    [[nodiscard]] QIconEngine *clone() const override { return new ListEngine(*this); }

private:
    HIMAGELIST m_list; ///< not owned
    int m_image;
    int m_selectedImage;
};

class SwatchEngine final : public ClearEngine {
public:
    explicit SwatchEngine(ColorRef color) : m_color(platform::ToQColor(color)) {}
    void paint(QPainter *painter, QRect const &rect, QIcon::Mode mode, QIcon::State) override {
        painter->save();
        painter->setOpacity(mode == QIcon::Disabled ? 0.35 : 1);
        painter->fillRect(rect, QColor(128, 128, 128));
        painter->fillRect(rect.adjusted(1, 1, -1, -1), m_color);
        painter->restore();
    }
    [[nodiscard]] QIconEngine *clone() const override { return new SwatchEngine(*this); }

private:
    QColor m_color;
};

} // namespace

QIcon ListIcon(HIMAGELIST list, int image, int selectedImage) {
    return QIcon(new ListEngine(list, image, selectedImage));
}

QIcon SwatchIcon(ColorRef color) { return QIcon(new SwatchEngine(color)); }

QPixmap WashedOut(QPixmap const &picture) {
    QStyleOption option;
    option.palette = QApplication::palette();
    QPixmap pale = QApplication::style()->generatedIconPixmap(QIcon::Disabled, picture, &option);
    pale.setDevicePixelRatio(picture.devicePixelRatio());
    return pale;
}

} // namespace zelvar
