#include "zelvar/controls/HyperLink.h"

#include "zelvar/platform/ui/ModalLoop.h"
#include "zelvar/platform/ui/PaletteColors.h"
#include "zelvar/platform/ui/Reading.h"
#include "zelvar/platform/ui/SystemColor.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QPointer>
#include <QtGui/QClipboard>
#include <QtGui/QContextMenuEvent>
#include <QtGui/QDesktopServices>
#include <QtGui/QGuiApplication>
#include <QtWidgets/QAccessibleWidget>
#include <QtWidgets/QMenu>
#include <QtWidgets/QStyleOptionFocusRect>
#include <QtWidgets/QStylePainter>

#include <algorithm>
#include <array>

namespace zelvar {

namespace {

HyperLink::Opener &CurrentOpener() {
    static HyperLink::Opener opener;
    return opener;
}

class LinkAccessible final : public QAccessibleWidget {
public:
    explicit LinkAccessible(HyperLink &link) : QAccessibleWidget(&link, QAccessible::Link) {}
    [[nodiscard]] QString text(QAccessible::Text kind) const override {
        if (kind == QAccessible::Value)
            return platform::ToQString(Link().GetURL());
        QString const own = QAccessibleWidget::text(kind);
        return own.isEmpty() && kind == QAccessible::Name ? Link().text() : own;
    }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.linked = true;
        state.traversed = Link().IsVisited();
        return state;
    }
    [[nodiscard]] QStringList actionNames() const override {
        return QStringList{pressAction()} + QAccessibleWidget::actionNames();
    }
    void doAction(QString const &name) override {
        if (name == pressAction() && Link().isEnabled())
            Link().Open();
        else
            QAccessibleWidget::doAction(name);
    }

private:
    [[nodiscard]] HyperLink &Link() const { return *static_cast<HyperLink *>(widget()); }
};

QAccessibleInterface *MakeInterface(QString const &, QObject *object) {
    auto *const link = qobject_cast<HyperLink *>(object);
    return link == nullptr ? nullptr : new LinkAccessible(*link);
}

} // namespace

HyperLink::HyperLink(QWidget *parent) : QLabel(parent) {
    static bool const installed = (QAccessible::installFactory(MakeInterface), true);
    static_cast<void>(installed);
    setTextFormat(Qt::PlainText);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    setAttribute(Qt::WA_Hover);
    setMargin(2);                                                // for the focus frame
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred); // what is beside the text is no link
}

DString HyperLink::GetWindowText() const { return platform::ToDString(text()); }

void HyperLink::SetWindowText(DString const &text) {
    m_ownText = !text.empty();
    setText(platform::ToQString(m_ownText ? text : m_url));
}

void HyperLink::SetURL(DString const &url) {
    m_url = url;
    m_visited = false;
    setToolTip(platform::ToToolTip(platform::ToQString(url)));
    if (!m_ownText)
        setText(platform::ToQString(url));
    update();
}

void HyperLink::SetVisited(bool visited) {
    m_visited = visited;
    update();
}

void HyperLink::SetColors(ColorRef link, ColorRef visited) {
    m_color = platform::ToQColor(link);
    m_visitedColor = platform::ToQColor(visited);
    update();
}

void HyperLink::SetOpener(Opener opener) { CurrentOpener() = std::move(opener); }

QUrl HyperLink::Target() const {
    QString const address = platform::ToQString(Trimmed(m_url));
    bool const hasControls = std::any_of(address.begin(), address.end(), [](QChar c) { return c < u' '; });
    if (hasControls)
        return {};
    return address.startsWith(u'/') ? QUrl::fromLocalFile(address) : QUrl(address);
}

bool HyperLink::MayOpen(DString const &scheme) const {
    static constexpr std::array<std::string_view, 4> known{"http", "https", "mailto", "file"};
    return std::find(known.begin(), known.end(), scheme) != known.end();
}

bool HyperLink::Open() {
    QUrl const target = Target();
    bool const allowed = target.isValid() && !target.isRelative() && MayOpen(platform::ToDString(target.scheme()));
    QPointer<HyperLink> const alive(this);
    bool const done = allowed && (CurrentOpener() ? CurrentOpener()(target) : QDesktopServices::openUrl(target));
    if (alive.isNull())
        return done;
    if (done)
        SetVisited(true);
    Q_EMIT Opened(done);
    return done;
}

void HyperLink::CopyAddress() const { QGuiApplication::clipboard()->setText(platform::ToQString(m_url)); }

void HyperLink::paintEvent(QPaintEvent *) {
    QStylePainter painter(this);
    QColor const link = m_color.value_or(palette().color(QPalette::Link));
    QColor const visited = m_visitedColor.value_or(palette().color(QPalette::LinkVisited));
    QColor const ground = palette().color(QPalette::Window);
    painter.setPen(isEnabled() ? platform::ThemedInk(m_visited ? visited : link, ground)
                               : palette().color(QPalette::WindowText));
    QFont font = painter.font();
    font.setUnderline(isEnabled() && (underMouse() || hasFocus()));
    painter.setFont(font);
    QRect const area = contentsRect().adjusted(margin(), margin(), -margin(), -margin());
    int const place = platform::ReadingFlags(text(), alignment(), layoutDirection());
    painter.drawText(area, place | (wordWrap() ? Qt::TextWordWrap : 0), text());
    if (hasFocus()) {
        QStyleOptionFocusRect frame;
        frame.initFrom(this);
        frame.rect = contentsRect();
        painter.drawPrimitive(QStyle::PE_FrameFocusRect, frame);
    }
}

void HyperLink::mousePressEvent(QMouseEvent *event) { event->setAccepted(event->button() == Qt::LeftButton); }

void HyperLink::mouseReleaseEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton && rect().contains(event->pos()))
        Open();
}

void HyperLink::keyPressEvent(QKeyEvent *event) {
    if (event->matches(QKeySequence::Copy))
        CopyAddress();
    else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter || event->key() == Qt::Key_Space)
        Open();
    else
        QLabel::keyPressEvent(event);
}

void HyperLink::contextMenuEvent(QContextMenuEvent *event) {
    QMenu menu;
    QAction const *const open = menu.addAction(platform::Shown("&Open"));
    QAction const *const copy = menu.addAction(platform::Shown("&Copy address"));
    bool const keyboard = event->reason() == QContextMenuEvent::Keyboard;
    QPointer<HyperLink> const alive(this);
    QAction const *const picked =
        platform::RunMenu(menu, keyboard ? mapToGlobal(QPoint(0, height())) : event->globalPos());
    if (alive.isNull() || picked == nullptr)
        return;
    if (picked == open)
        Open();
    else if (picked == copy)
        CopyAddress();
}

bool HyperLink::event(QEvent *event) {
    switch (event->type()) {
    case QEvent::EnabledChange:
        isEnabled() ? setCursor(Qt::PointingHandCursor) : unsetCursor();
        break;
    case QEvent::Enter:
    case QEvent::Leave:
    case QEvent::FocusIn:
    case QEvent::FocusOut:
        update();
        break;
    default:
        break;
    }
    return QLabel::event(event);
}

} // namespace zelvar
