#include "zelvar/platform/ui/Pictures.h"

#include "zelvar/platform/ui/SystemColor.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtGui/QIconEngine>
#include <QtGui/QPainter>
#include <QtSvg/QSvgRenderer>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <functional>
#include <map>
#include <tuple>
#include <utility>

// A static library's resources are linked only if something names them; the macro must stand outside a namespace.
static void InitPictureResources() { Q_INIT_RESOURCE(pictures); }

namespace zelvar::platform {

namespace {

constexpr double kDisabledOpacity = 0.35;
constexpr std::streamsize kLargestFile = 4 << 20; // bytes; a bigger file is no icon
constexpr int kKeptPictures = 4096;

using PictureKey = std::tuple<unsigned, int, int, int>; // list, index, side, pixel ratio in hundredths

std::map<PictureKey, QPixmap> &KeptPictures() {
    static std::map<PictureKey, QPixmap> pictures;
    // Pixmaps must not outlive the application.
    static bool const cleared = (qAddPostRoutine([] { pictures.clear(); }), true);
    static_cast<void>(cleared);
    return pictures;
}

/// The desktop's names for things that we draw too.
std::map<QString, char const *> const &DesktopNames() {
    static std::map<QString, char const *> const names{
        {"application-octet-stream", "file"},
        {"application-x-executable", "file"},
        {"application-x-sqlite3", "database"},
        {"drive-harddisk", "drive"},
        {"drive-removable-media", "drive-removable"},
        {"folder-remote", "share"},
        {"go-up", "folder-up"},
        {"image-x-generic", "image"},
        {"list-add", "add"},
        {"network-server", "server"},
        {"network-workgroup", "network"},
        {"package-x-generic", "container"},
        {"text-x-generic", "file"},
        {"user-bookmarks", "star"},
        {"user-home", "home"},
        {"x-office-document", "file"},
        {"x-office-drawing", "vector"},
        {"x-office-spreadsheet", "table"},
    };
    return names;
}

QString ResourcePath(QString const &name) {
    static bool const initialised = (InitPictureResources(), true);
    static_cast<void>(initialised);
    auto const known = DesktopNames().find(name);
    QString const ours = known == DesktopNames().end() ? name : QString::fromLatin1(known->second);
    return ours.startsWith(u':') ? ours : QStringLiteral(":/zelvar/pictures/%1.svg").arg(ours);
}

QPixmap EmptyPixmap(int side, qreal devicePixelRatio) {
    int const pixels = static_cast<int>(std::lround(side * devicePixelRatio));
    QPixmap pixmap(pixels, pixels);
    pixmap.setDevicePixelRatio(devicePixelRatio);
    pixmap.fill(Qt::transparent);
    return pixmap;
}

/// The picture scaled to fit a square, centred in it.
QPixmap Fitted(QImage const &image, qreal devicePixelRatio, int side) {
    QPixmap pixmap = EmptyPixmap(side, devicePixelRatio);
    if (image.isNull())
        return pixmap;
    QSize const pixels = pixmap.size();
    QImage const scaled =
        image.size() == pixels ? image : image.scaled(pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QPainter painter(&pixmap);
    painter.scale(1 / devicePixelRatio, 1 / devicePixelRatio);
    painter.drawImage((pixels.width() - scaled.width()) / 2, (pixels.height() - scaled.height()) / 2, scaled);
    return pixmap;
}

QPixmap FilePicture(DString const &path, qreal devicePixelRatio, int side) {
    // By the bytes of its name, which need not be text.
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    auto const size = static_cast<std::streamsize>(file.tellg()); // -1 where there is no file
    if (size <= 0 || size > kLargestFile)
        return {};
    QByteArray bytes(size, Qt::Uninitialized);
    file.seekg(0);
    if (!file.read(bytes.data(), size))
        return {};
    QImage const image = QImage::fromData(bytes);
    return image.isNull() ? QPixmap() : Fitted(image, devicePixelRatio, side);
}

/// An SVG resource, or one square of a strip of them, drawn at the size that is wanted.
QPixmap SvgPicture(QString const &path, int index, qreal devicePixelRatio, int side) {
    QSvgRenderer renderer(path);
    QRectF const whole = renderer.viewBoxF();
    if (!renderer.isValid() || index < 0 || (index + 1) * whole.height() > whole.width())
        return {};
    renderer.setViewBox(QRectF(whole.left() + index * whole.height(), whole.top(), whole.height(), whole.height()));
    QPixmap pixmap = EmptyPixmap(side, devicePixelRatio);
    QPainter painter(&pixmap);
    renderer.render(&painter, QRectF(0, 0, side, side));
    return pixmap;
}

QPixmap StripPicture(QString const &name, int index, qreal devicePixelRatio, int side) {
    QString const path = ResourcePath(name);
    if (path.endsWith(QStringLiteral(".svg")))
        return SvgPicture(path, index, devicePixelRatio, side);
    QImage const strip(path);
    int const cell = strip.height();
    if (strip.isNull() || index < 0 || index >= strip.width() / cell)
        return {};
    return Fitted(strip.copy(index * cell, 0, cell, cell), devicePixelRatio, side);
}

QPixmap ThemePicture(ImageDescription const &description, qreal devicePixelRatio, int side) {
    QIcon const icon = QIcon::fromTheme(ToQString(description.name));
    if (icon.isNull())
        return {};
    return Fitted(icon.pixmap(QSize(side, side), devicePixelRatio).toImage(), devicePixelRatio, side);
}

/// The shapes stand in a square of 16 units, each in its box; a line one unit wide goes round inside the box.
QPixmap ShapePicture(ImageDescription const &description, qreal devicePixelRatio, int side) {
    using Shapes = ImageDescription::Shapes;
    QPixmap pixmap = EmptyPixmap(side, devicePixelRatio);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing, description.shape != Shapes::Rectangle);
    painter.scale(side / 16.0, side / 16.0);
    QColor const border = ToQColor(description.border);
    QColor const fill = ToQColor(description.fill);
    switch (description.shape) {
    case Shapes::Rectangle: // filled twice: no line is split between two pixels
        painter.fillRect(QRectF(2, 2, 12, 12), border);
        painter.fillRect(QRectF(3, 3, 10, 10), fill);
        break;
    case Shapes::SmallCircle:
        painter.setPen(QPen(border, 1));
        painter.setBrush(fill);
        painter.drawEllipse(QRectF(4.5, 4.5, 7, 7));
        break;
    case Shapes::Circle:
    case Shapes::DottedCircle:
        painter.setPen(QPen(border, 1));
        painter.setBrush(fill);
        painter.drawEllipse(QRectF(1.5, 1.5, 14, 13));
        if (description.shape == Shapes::DottedCircle) {
            painter.setBrush(border);
            painter.drawEllipse(QRectF(7, 6.5, 3, 3));
        }
        break;
    }
    return pixmap;
}

/// Null where the fallback has to stand for it.
QPixmap OwnPicture(ImageDescription const &description, qreal devicePixelRatio, int side) {
    switch (description.kind) {
    case ImageDescription::Kind::File:
        return FilePicture(description.name, devicePixelRatio, side);
    case ImageDescription::Kind::Strip:
        return StripPicture(ToQString(description.name), description.index, devicePixelRatio, side);
    case ImageDescription::Kind::Shape:
        return ShapePicture(description, devicePixelRatio, side);
    case ImageDescription::Kind::ThemeIcon:
        return ThemePicture(description, devicePixelRatio, side);
    }
    return {};
}

/// Draws a picture at whatever size is asked for, and keeps what it has drawn.
class PictureIconEngine final : public QIconEngine {
public:
    using Draw = std::function<QPixmap(int side)>;
    explicit PictureIconEngine(Draw draw) : m_draw(std::move(draw)) {}

    void paint(QPainter *painter, QRect const &rect, QIcon::Mode mode, QIcon::State state) override {
        qreal const ratio = painter->device()->devicePixelRatio();
        painter->drawPixmap(rect, scaledPixmap(rect.size() * ratio, mode, state, ratio));
    }
    QPixmap pixmap(QSize const &size, QIcon::Mode mode, QIcon::State state) override {
        return scaledPixmap(size, mode, state, 1);
    }
    QPixmap scaledPixmap(QSize const &size, QIcon::Mode mode, QIcon::State, qreal scale) override {
        // `size` is in device pixels.
        int const side = std::max(1, std::min(size.width(), size.height()));
        QPixmap &kept = m_kept[{side, mode == QIcon::Disabled}];
        if (kept.isNull()) {
            kept = EmptyPixmap(side, 1);
            QPainter painter(&kept);
            painter.setOpacity(mode == QIcon::Disabled ? kDisabledOpacity : 1);
            painter.drawPixmap(0, 0, m_draw(side));
        }
        QPixmap pixmap = kept;
        pixmap.setDevicePixelRatio(scale);
        return pixmap;
    }
    [[nodiscard]] QIconEngine *clone() const override { return new PictureIconEngine(m_draw); }

private:
    Draw m_draw;
    std::map<std::pair<int, bool>, QPixmap> m_kept; ///< by side and whether it is washed out
};

} // namespace

QPixmap ResourcePicture(QString const &name, qreal devicePixelRatio, int side) {
    QString path = ResourcePath(name);
    if (name.isEmpty() || !QFile::exists(path))
        path = ResourcePath(QStringLiteral("file"));
    return path.endsWith(QStringLiteral(".svg")) ? SvgPicture(path, 0, devicePixelRatio, side)
                                                 : Fitted(QImage(path), devicePixelRatio, side);
}

QPixmap Picture(ImageDescription const &description, qreal devicePixelRatio, int side) {
    QPixmap pixmap = OwnPicture(description, devicePixelRatio, side);
    if (pixmap.isNull())
        pixmap = ResourcePicture(ToQString(description.fallback), devicePixelRatio, side);
    if (description.linkOverlay) {
        QPainter painter(&pixmap);
        painter.drawPixmap(0, 0, ResourcePicture(QStringLiteral("link-overlay"), devicePixelRatio, side));
    }
    return pixmap;
}

bool HasPicture(ImageDescription const &description) { return !OwnPicture(description, 1, kSmallPicture).isNull(); }

QPixmap ListPicture(HIMAGELIST list, int index, qreal devicePixelRatio, int side) {
    if (list == nullptr || index < 0 || index >= list->GetCount())
        return {};
    PictureKey const key{list->Id(), index, side, static_cast<int>(std::lround(devicePixelRatio * 100))};
    auto &kept = KeptPictures();
    if (auto const found = kept.find(key); found != kept.end())
        return found->second;
    if (kept.size() >= kKeptPictures)
        kept.clear();
    return kept[key] = Picture(list->Get(index), devicePixelRatio, side);
}

int StripCount(DString const &name) {
    QString const path = ResourcePath(ToQString(name));
    if (!QFile::exists(path))
        return 0;
    if (path.endsWith(QStringLiteral(".svg"))) {
        QRectF const whole = QSvgRenderer(path).viewBoxF();
        return whole.height() > 0 ? static_cast<int>(whole.width() / whole.height()) : 0;
    }
    QImage const strip(path);
    return strip.isNull() ? 0 : strip.width() / strip.height();
}

QIcon ResourceIcon(QString const &name) {
    return QIcon(new PictureIconEngine([name](int side) { return ResourcePicture(name, 1, side); }));
}

QIcon DescribedIcon(ImageDescription const &description) {
    return QIcon(new PictureIconEngine([description](int side) { return Picture(description, 1, side); }));
}

} // namespace zelvar::platform
