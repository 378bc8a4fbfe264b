#include "zelvar/dialogs/MessageBoxWindow.h"

#include "zelvar/dialogs/DialogResources.h"
#include "zelvar/dialogs/core/MessageBoxSet.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/DialogTemplate.h"
#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QAccessible>
#include <QtGui/QClipboard>
#include <QtGui/QCloseEvent>
#include <QtGui/QFontInfo>
#include <QtGui/QPainter>
#include <QtGui/QScreen>
#include <QtGui/QTextLayout>
#include <QtWidgets/QApplication>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QStyle>

#include <algorithm>
#include <cmath>

namespace zelvar {

/// The message: read like a label, selected and scrolled like a text.
class MessageText : public QPlainTextEdit {
public:
    explicit MessageText(QWidget *parent) : QPlainTextEdit(parent) {
        setReadOnly(true);
        setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
        setFocusPolicy(Qt::ClickFocus);
        setFrameShape(NoFrame);
        setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        document()->setDocumentMargin(0);
        viewport()->setAutoFillBackground(false);
        viewport()->setCursor(Qt::ArrowCursor);
        QPalette colors = palette();
        colors.setColor(QPalette::Text, colors.color(QPalette::WindowText));
        setPalette(colors);
    }
    /// There is more of it than room.
    void LetScroll() {
        setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
        setFocusPolicy(Qt::StrongFocus);
    }

protected:
    void keyPressEvent(QKeyEvent *event) override {
        if (event->matches(QKeySequence::Copy) && !textCursor().hasSelection())
            event->ignore(); // the window has something to copy
        else
            QPlainTextEdit::keyPressEvent(event);
    }
};

namespace {

constexpr int kUsualFont = 12;        // pixels
constexpr int kUsualIcon = 32;        // pixels at that font
constexpr int kMostMeasured = 20'000; // pixels; higher than any screen, and few enough for dialog units
constexpr std::uint32_t kVisible = 0x10000000;
constexpr std::uint32_t kTypeBits = 0xF;
constexpr std::uint32_t kDefaultButton = 1;
constexpr std::uint32_t kAutoCheckBox = 3;

QScreen const &ScreenOf(QWidget const *parent) {
    return parent != nullptr ? *parent->screen() : *QGuiApplication::primaryScreen();
}

int FontPixels() { return QFontInfo(MessageBoxWindow::Font()).pixelSize(); }

QString IconName(unsigned type) {
    switch (type & MB_ICONMASK) {
    case MB_ICONHAND:
        return QStringLiteral("stop");
    case MB_ICONQUESTION:
        return QStringLiteral(":/zelvar/dialogs/question.svg");
    case MB_ICONEXCLAMATION:
        return QStringLiteral("warning");
    default:
        return QStringLiteral("information");
    }
}

/// The icon, drawn at the left upper corner of its place.
class IconPlace : public QWidget {
public:
    IconPlace(QWidget *parent, QString name, int side) : QWidget(parent), m_name(std::move(name)), m_side(side) {}

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        painter.drawPixmap(0, 0, platform::ResourcePicture(m_name, devicePixelRatioF(), m_side));
    }

private:
    QString m_name;
    int m_side; ///< pixels
};

/// Breaks a caption into lines where its control would be wider than `most` pixels.
void WrapCaption(QCheckBox &box, int most) {
    int const text = box.fontMetrics().size(Qt::TextShowMnemonic, box.text()).width();
    int const around = box.sizeHint().width() - text;
    if (text + around <= most)
        return;
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    QTextLayout layout(QString(box.text()).replace(u'\n', QChar::LineSeparator), box.font());
    layout.setTextOption(option);
    QStringList lines;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(std::max(1, most - around));
        lines.append(layout.text().mid(line.textStart(), line.textLength()).remove(QChar::LineSeparator).trimmed());
    }
    layout.endLayout();
    box.setText(lines.join(u'\n'));
}

/// What a button's text takes between its edges; 0 for none.
int NeededWidth(QPushButton const *button) {
    constexpr int edges = 6; // pixels
    return button == nullptr ? 0 : button->fontMetrics().size(Qt::TextShowMnemonic, button->text()).width() + edges;
}

} // namespace

MessageBoxWindow::MessageBoxWindow(QWidget *parent, DialogBlock const &block, MessageBoxState const &state,
                                   MessageBoxRequest const &request)
    : QDialog(parent), m_state(state), m_request(request) {
    UseDialogResources();
    Qt::WindowFlags flags = Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint;
    flags.setFlag(Qt::WindowCloseButtonHint, state.isCancelAllowed);
    flags.setFlag(Qt::WindowStaysOnTopHint, (request.type & MB_SYSTEMMODAL) != 0);
    setWindowFlags(flags);
    setFont(Font());
    setWindowTitle(QString::fromStdU16String(block.caption));
    setAccessibleName(windowTitle());
    setAccessibleDescription(platform::ToQString(request.text));
    for (DialogBlock::Control const &control : block.controls) {
        QWidget *const widget = MakeControl(control);
        platform::SetDlgCtrlID(*widget, control.id);
        widget->setVisible((control.style & kVisible) != 0);
        if (auto *const button = qobject_cast<QPushButton *>(widget)) {
            int const id = control.id;
            connect(button, &QPushButton::clicked, this, [this, id] { OnCommand(id); });
        }
    }
    PlaceControls(block);
    if (QWidget *const focus = platform::GetDlgItem(*this, state.defaultButton))
        focus->setFocus();
}

QWidget *MessageBoxWindow::MakeControl(DialogBlock::Control const &control) {
    QString const title = QString::fromStdU16String(control.title);
    if (control.classAtom == CDialogTmpl::kButton) {
        if ((control.style & kTypeBits) == kAutoCheckBox)
            return new QCheckBox(platform::ToQString(m_request.checkText), this); // an item of a template is cut
        auto *const button = new QPushButton(title, this);
        button->setAutoDefault(true); // Return presses the one with the focus
        button->setDefault((control.style & kTypeBits) == kDefaultButton);
        return button;
    }
    if (control.id == kMessageBoxIcon) {
        auto *const icon = new IconPlace(this, IconName(m_request.type), Metrics(parentWidget()).icon.cx);
        return icon;
    }
    // An item of a template holds the beginning of a long text only.
    m_text = new MessageText(this);
    m_text->setPlainText(platform::ToQString(m_request.text));
    m_text->setAccessibleName(platform::Shown("Message"));
    return m_text;
}

void MessageBoxWindow::PlaceControls(DialogBlock const &block) {
    Rect client = platform::MapDialogRect(*this, {0, 0, block.header.cx, block.header.cy});
    QSize const screen = ScreenOf(parentWidget()).availableSize();
    int const frame = style()->pixelMetric(QStyle::PM_TitleBarHeight) + 8;
    std::vector<PlacedControl> placed;
    for (DialogBlock::Control const &control : block.controls) {
        Rect place = platform::MapDialogRect(*this, control.units);
        // The style's mark and margin may need more than the template has, and so may the text.
        if (auto *const box = platform::GetDlgItem<QCheckBox>(*this, control.id)) {
            WrapCaption(*box, screen.width() - 8 - 2 * place.left);
            place.right = std::max(place.right, place.left + box->sizeHint().width());
            int const bottom = std::max(place.bottom, place.top + box->sizeHint().height());
            client.bottom += bottom - place.bottom;
            place.bottom = bottom;
        }
        placed.push_back({control.id, place, NeededWidth(platform::GetDlgItem<QPushButton>(*this, control.id))});
    }
    Size const size = FitMessageBox(placed, {client.right, client.bottom},
                                    {.most = {screen.width() - 8, screen.height() - frame},
                                     .font = FontPixels(),
                                     .scrollBar = style()->pixelMetric(QStyle::PM_ScrollBarExtent)});
    for (PlacedControl const &control : placed) {
        Rect const &place = control.place;
        platform::GetDlgItem(*this, control.id)->setGeometry(place.left, place.top, place.Width(), place.Height());
    }
    setFixedSize(size.cx, size.cy);
    if (m_text != nullptr && size.cy < client.bottom)
        m_text->LetScroll();
}

QFont MessageBoxWindow::Font() { return QApplication::font(); }

MessageBoxMetrics MessageBoxWindow::Metrics(QWidget const *parent) {
    QSize const screen = ScreenOf(parent).size();
    int const icon = kUsualIcon * FontPixels() / kUsualFont;
    return {.screen = {screen.width(), screen.height()},
            .icon = {icon, icon},
            .baseUnits = platform::DialogBaseUnits(Font()),
            .font = FontPixels()};
}

Size MessageBoxWindow::Measure(DString const &text, Size box) {
    QString whole = platform::ToQString(text);
    whole.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    double width = 0;
    double height = 0;
    for (QStringView const line : QStringView(whole).tokenize(u'\n')) {
        QTextLayout layout(line.toString(), Font());
        layout.setTextOption(option);
        layout.beginLayout();
        for (QTextLine row = layout.createLine(); row.isValid() && height < kMostMeasured; row = layout.createLine()) {
            row.setLeadingIncluded(true); // as the field counts it, whose last line would be cut
            row.setLineWidth(box.cx);
            width = std::max(width, row.naturalTextWidth());
            height += row.height();
        }
        layout.endLayout();
        if (height >= kMostMeasured)
            break;
    }
    return {static_cast<int>(std::ceil(width)), static_cast<int>(std::ceil(height))};
}

void MessageBoxWindow::reject() {
    if (m_state.isCancelAllowed)
        End(IDCANCEL);
}

void MessageBoxWindow::showEvent(QShowEvent *event) {
    QDialog::showEvent(event);
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void MessageBoxWindow::closeEvent(QCloseEvent *event) {
    event->ignore(); // it ends by its buttons, the one that cancels too
    reject();
}

void MessageBoxWindow::keyPressEvent(QKeyEvent *event) {
    if (event->matches(QKeySequence::Copy)) {
        if (m_text != nullptr && m_text->textCursor().hasSelection())
            m_text->copy();
        else
            QApplication::clipboard()->setText(platform::ToQString(MessageBoxAsText(m_request)));
        return;
    }
    if (m_text != nullptr && (event->key() == Qt::Key_PageDown || event->key() == Qt::Key_PageUp)) {
        m_text->verticalScrollBar()->triggerAction(
            event->key() == Qt::Key_PageDown ? QAbstractSlider::SliderPageStepAdd : QAbstractSlider::SliderPageStepSub);
        return;
    }
    // Mnemonics go without Alt here: nothing can be typed.
    if (event->modifiers() == Qt::NoModifier)
        for (QAbstractButton *const button : findChildren<QAbstractButton *>())
            if (QKeySequence const mnemonic = QKeySequence::mnemonic(button->text());
                !mnemonic.isEmpty() && mnemonic[0] == QKeyCombination(Qt::AltModifier, Qt::Key(event->key()))) {
                button->click();
                return;
            }
    QDialog::keyPressEvent(event);
}

void MessageBoxWindow::OnCommand(int id) {
    if (id != kMessageBoxHelp)
        End(id);
    else if (m_help)
        m_help();
}

void MessageBoxWindow::End(int id) {
    m_answer = id;
    auto const *const box = platform::GetDlgItem<QCheckBox>(*this, kMessageBoxCheck);
    if (m_state.hasCheckBox && box != nullptr && box->isChecked())
        m_answer |= static_cast<int>(MB_DONTASKAGAIN);
    done(Accepted);
}

} // namespace zelvar
