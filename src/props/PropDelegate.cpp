#include "zelvar/props/PropDelegate.h"

#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/platform/ui/Reading.h"
#include "zelvar/platform/ui/SystemColor.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/props/CZelPropList.h"

#include <QtCore/QPointer>
#include <QtGui/QAccessible>
#include <QtGui/QKeyEvent>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QToolButton>
#include <QtWidgets/QToolTip>
#include <QtWidgets/QTreeWidget>

#include <algorithm>

namespace zelvar {

namespace {

using Kind = PropRule::Kind;

constexpr int kValueColumn = 1;
constexpr int kShownLines = 6; ///< of a text of several lines while it is edited

/// A choice is taken as soon as it is picked from the open list; the arrows only look through it.
class ChoiceEditor final : public CZelComboBox {
public:
    using CZelComboBox::CZelComboBox;
    [[nodiscard]] bool WasPicked() const { return m_listClosed; }
    void hidePopup() override {
        m_listClosed = true;
        CZelComboBox::hidePopup();
    }

protected:
    void keyPressEvent(QKeyEvent *event) override {
        m_listClosed = false;
        CZelComboBox::keyPressEvent(event);
    }
    void wheelEvent(QWheelEvent *event) override { event->ignore(); } // it scrolls the list below

private:
    bool m_listClosed = false;
};

/// An edit field with a button that asks for the value in another way.
class EntryWithButton final : public QWidget {
public:
    explicit EntryWithButton(QWidget *parent)
        : QWidget(parent), m_line(new QLineEdit(this)), m_button(new QToolButton(this)) {
        auto *const row = new QHBoxLayout(this);
        row->setContentsMargins(0, 0, 0, 0);
        row->setSpacing(0);
        row->addWidget(m_line, 1);
        row->addWidget(m_button);
        m_button->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Ignored); // as high as its row
        m_line->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
        setFocusProxy(m_line);
        setAutoFillBackground(true);
    }
    [[nodiscard]] QLineEdit &Line() const { return *m_line; }
    [[nodiscard]] QToolButton &Button() const { return *m_button; }

private:
    QLineEdit *m_line;
    QToolButton *m_button;
};

QLineEdit *LineOf(QWidget *editor) {
    auto *const both = dynamic_cast<EntryWithButton *>(editor);
    return both == nullptr ? qobject_cast<QLineEdit *>(editor) : &both->Line();
}

QString EntryIn(QWidget *editor) {
    if (auto const *const text = qobject_cast<QPlainTextEdit *>(editor))
        return text->toPlainText();
    if (auto const *const choice = qobject_cast<QComboBox *>(editor))
        return choice->currentText();
    return LineOf(editor)->text();
}

void SetEntry(QWidget *editor, QString const &entry) {
    if (auto *const text = qobject_cast<QPlainTextEdit *>(editor))
        text->setPlainText(entry);
    else if (auto *const choice = qobject_cast<QComboBox *>(editor))
        choice->setCurrentIndex(choice->findText(entry));
    else
        LineOf(editor)->setText(entry);
}

/// What the editor showed at first: an entry left as it was changes nothing, whatever bytes it stands for.
constexpr char kFirstEntry[] = "zelvarFirstEntry";

/// An editor that is being closed still loses its focus; the view knows it no more by then.
constexpr char kClosed[] = "zelvarClosed";

bool IsOpen(QWidget const *editor) { return !editor->isHidden() && !editor->property(kClosed).toBool(); }

bool IsTaken(CZelProp const &prop, QWidget *editor) {
    QString const entry = EntryIn(editor);
    return entry == editor->property(kFirstEntry).toString() ||
           prop.GetRule().Read(platform::ToDString(entry)).has_value();
}

/// A wrong entry is red while it is being typed.
void MarkEntry(QLineEdit &line, bool taken) {
    QPalette palette = QApplication::palette(&line);
    if (!taken)
        palette.setColor(QPalette::Text,
                         palette.color(QPalette::Base).lightness() < 128 ? QColor(255, 130, 120) : QColor(190, 0, 0));
    line.setPalette(palette);
}

QIcon Swatch(ColorRef color, int side, qreal ratio) {
    QPixmap pixmap(QSize(side, side) * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(QColor(90, 90, 90));
    QPainter painter(&pixmap);
    painter.fillRect(QRect(1, 1, side - 2, side - 2), platform::ToQColor(color));
    return pixmap;
}

} // namespace

PropDelegate::PropDelegate(CZelPropList &list) : QStyledItemDelegate(&list), m_list(list) {}

CZelProp &PropDelegate::PropAt(QModelIndex const &index) const {
    return *static_cast<CZelProp *>(m_list.Tree().itemFromIndex(index));
}

QWidget *PropDelegate::EditorOf(QObject *part) const {
    auto *widget = qobject_cast<QWidget *>(part);
    while (widget != nullptr && widget->parentWidget() != m_list.Tree().viewport())
        widget = widget->parentWidget();
    return widget;
}

QWidget *PropDelegate::createEditor(QWidget *parent, QStyleOptionViewItem const &, QModelIndex const &index) const {
    CZelProp const &prop = PropAt(index);
    PropRule const &rule = prop.GetRule();
    if (index.column() != kValueColumn || !prop.TakesEntries() || rule.kind == Kind::Boolean)
        return nullptr;
    auto *const self = const_cast<PropDelegate *>(this); // its signals are meant for the view, as this function is
    QWidget *editor = nullptr;
    if (rule.kind == Kind::MultiLine) {
        auto *const text = new QPlainTextEdit(parent);
        text->setTabChangesFocus(true);
        editor = text;
    } else if (rule.kind == Kind::Choice) {
        auto *const choice = new ChoiceEditor(parent);
        for (DString const &option : rule.choices)
            choice->AddString(option);
        connect(choice, &QComboBox::activated, this, [self, choice] {
            if (choice->WasPicked())
                self->Commit(choice, NoHint);
        });
        editor = choice;
    } else if (rule.kind == Kind::Color || rule.kind == Kind::File || rule.kind == Kind::Folder) {
        auto *const both = new EntryWithButton(parent);
        both->Button().setText(rule.kind == Kind::Color ? platform::Shown("More…") : QStringLiteral("…"));
        both->Button().setToolTip(rule.kind == Kind::Color ? platform::Shown("More colours (F4)")
                                                           : platform::Shown("Browse (F4)"));
        both->Button().setAccessibleName(both->Button().toolTip());
        connect(&both->Button(), &QToolButton::clicked, this, [self, both] { self->AskFor(both); });
        both->Line().installEventFilter(self);
        both->Button().installEventFilter(self);
        editor = both;
    } else {
        editor = new QLineEdit(parent);
    }
    editor->setAccessibleName(platform::ToQString(prop.GetName()));
    if (QLineEdit *const line = LineOf(editor)) {
        line->setFrame(false);
        line->setAccessibleName(editor->accessibleName());
        line->setAccessibleDescription(platform::ToQString(rule.Wanted()));
        QPersistentModelIndex const at(index);
        connect(line, &QLineEdit::textChanged, this, [this, at, line, editor] {
            if (at.isValid())
                MarkEntry(*line, IsTaken(PropAt(at), editor));
        });
    }
    return editor;
}

void PropDelegate::setEditorData(QWidget *editor, QModelIndex const &index) const {
    if (editor->property(kFirstEntry).isValid())
        return; // what is being typed is not overwritten when the value changes meanwhile
    CZelProp const &prop = PropAt(index);
    editor->setProperty(kFirstEntry, platform::ToQString(prop.GetValue()));
    SetEntry(editor, platform::ToQString(prop.GetValue()));
    if (auto *const text = qobject_cast<QPlainTextEdit *>(editor))
        text->moveCursor(QTextCursor::End);
    editor->setProperty(kFirstEntry, EntryIn(editor)); // which an edit field may have put on one line
}

void PropDelegate::setModelData(QWidget *editor, QAbstractItemModel *, QModelIndex const &index) const {
    QString const entry = EntryIn(editor);
    if (entry != editor->property(kFirstEntry).toString())
        m_list.EnterValue(PropAt(index), platform::ToDString(entry));
}

void PropDelegate::updateEditorGeometry(QWidget *editor, QStyleOptionViewItem const &option,
                                        QModelIndex const &) const {
    QRect rect = option.rect.adjusted(0, 0, 0, -1); // the line below the row stays
    if (qobject_cast<QPlainTextEdit *>(editor) != nullptr) {
        int const room = m_list.Tree().viewport()->height();
        rect.setHeight(std::min(room, editor->fontMetrics().lineSpacing() * kShownLines + 12));
        rect.moveTop(std::max(0, std::min(rect.top(), room - rect.height())));
    }
    editor->setGeometry(rect);
}

QSize PropDelegate::sizeHint(QStyleOptionViewItem const &option, QModelIndex const &index) const {
    QSize size = QStyledItemDelegate::sizeHint(option, index) + QSize(0, 4);
    int const line = option.fontMetrics.height();
    if (index.column() == kValueColumn) {
        size.setHeight(std::min(size.height(), 2 * line)); // of a text of more lines the first is shown
        return size;
    }
    // A name that is wider than its column is broken between its words.
    QTreeWidget const &tree = m_list.Tree();
    int depth = 1;
    for (QModelIndex above = index.parent(); above.isValid(); above = above.parent())
        ++depth;
    int const margin = 2 * (tree.style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, &tree) + 1);
    int const room = tree.columnWidth(index.column()) - depth * tree.indentation() - margin;
    QString const name = index.data().toString();
    if (room > 0 && !tree.uniformRowHeights() && !PropAt(index).IsGroup() &&
        option.fontMetrics.horizontalAdvance(name) > room)
        size.rheight() +=
            option.fontMetrics.boundingRect(QRect(0, 0, room, 100 * line), Qt::TextWordWrap, name).height() - line;
    return size;
}

void PropDelegate::initStyleOption(QStyleOptionViewItem *option, QModelIndex const &index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    option->text = platform::Isolated(option->text, option->direction);
    CZelProp const &prop = PropAt(index);
    option->features.setFlag(QStyleOptionViewItem::WrapText, index.column() != kValueColumn);
    if (index.column() != kValueColumn || prop.IsGroup())
        return;
    if (prop.GetRule().kind == Kind::Color) {
        int const side = option->fontMetrics.ascent() + 2;
        option->features |= QStyleOptionViewItem::HasDecoration;
        option->decorationSize = QSize(side, side);
        option->icon = Swatch(prop.GetColor(), side, m_list.devicePixelRatioF());
    }
    if (prop.GetRule().kind == Kind::Boolean && !prop.IsEditable())
        option->state &= ~QStyle::State_Enabled; // the box looks as if it could be checked otherwise
}

bool PropDelegate::editorEvent(QEvent *event, QAbstractItemModel *, QStyleOptionViewItem const &option,
                               QModelIndex const &index) {
    bool const released = event->type() == QEvent::MouseButtonRelease;
    if (index.column() != kValueColumn || (!released && event->type() != QEvent::MouseButtonDblClick))
        return false;
    CZelProp &prop = PropAt(index);
    auto const *const mouse = static_cast<QMouseEvent *>(event);
    if (prop.GetRule().kind != Kind::Boolean || !prop.TakesEntries() || mouse->button() != Qt::LeftButton)
        return false;
    QStyleOptionViewItem box(option);
    initStyleOption(&box, index);
    QRect const check = m_list.style()->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &box, box.widget);
    // A click on the box turns the value over, a double click anywhere else in the cell does.
    return released == check.contains(mouse->position().toPoint()) &&
           m_list.EnterValue(prop, PropRule::FromBool(!prop.GetBool()));
}

void PropDelegate::Close(QWidget *editor, EndEditHint hint) {
    if (!IsOpen(editor))
        return;
    editor->setProperty(kClosed, true);
    Q_EMIT closeEditor(editor, hint);
}

void PropDelegate::Commit(QWidget *editor, EndEditHint hint) {
    QModelIndex const index = m_list.Tree().currentIndex().siblingAtColumn(kValueColumn);
    CZelProp const *const prop = index.isValid() ? &PropAt(index) : nullptr;
    if (prop != nullptr && !IsTaken(*prop, editor)) {
        QString const wanted = platform::ToQString(prop->GetRule().Wanted());
        QToolTip::showText(editor->mapToGlobal(editor->rect().bottomLeft()), wanted, editor);
        QAccessibleEvent alert(editor, QAccessible::Alert);
        QAccessible::updateAccessibility(&alert);
        return;
    }
    QPointer<QWidget> const still(editor); // whoever is told of the value may empty the list
    Q_EMIT commitData(editor);
    if (!still.isNull())
        Close(editor, hint);
}

void PropDelegate::AskFor(QWidget *editor) {
    CZelProp *const prop = m_list.GetCurSel();
    if (prop == nullptr || m_asking)
        return;
    QPointer<PropDelegate> const alive(this);
    QPointer<QWidget> const still(editor);
    DString value = platform::ToDString(EntryIn(editor));
    m_asking = true;
    bool const answered = m_list.OnBrowse(*prop, value);
    if (alive.isNull())
        return; // the list went with its window
    m_asking = false;
    if (still.isNull())
        return;
    if (!answered) {
        editor->setFocus();
        return;
    }
    m_list.EnterValue(*prop, value); // as it is: a path need not be text
    if (!still.isNull())
        Close(editor, RevertModelCache);
}

bool PropDelegate::TakesKey(QWidget *editor, QObject const *part, int key, Qt::KeyboardModifiers modifiers) {
    bool const several = qobject_cast<QPlainTextEdit *>(editor) != nullptr;
    bool const opens = key == Qt::Key_F4 || (key == Qt::Key_Down && modifiers.testFlag(Qt::AltModifier));
    switch (key) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (several && !modifiers.testFlag(Qt::ControlModifier))
            return false;
        Commit(editor, NoHint);
        return true;
    case Qt::Key_Escape:
        Close(editor, RevertModelCache);
        return true;
    case Qt::Key_Tab:
        Commit(editor, EditNextItem);
        return true;
    case Qt::Key_Backtab:
        Commit(editor, EditPreviousItem);
        return true;
    default:
        if (opens && dynamic_cast<EntryWithButton *>(editor) != nullptr && part != editor) {
            AskFor(editor);
            return true;
        }
        return false;
    }
}

void PropDelegate::LeaveFocus(QWidget *editor) {
    QWidget const *const focus = QApplication::focusWidget();
    bool const within = focus != nullptr && (focus == editor || editor->isAncestorOf(focus));
    if (!IsOpen(editor) || m_asking || within || QApplication::activePopupWidget() != nullptr)
        return;
    Q_EMIT commitData(editor); // which takes it if the rule does
    Close(editor, NoHint);
}

bool PropDelegate::eventFilter(QObject *object, QEvent *event) {
    QWidget *const editor = EditorOf(object);
    if (editor == nullptr)
        return false;
    switch (event->type()) {
    case QEvent::KeyPress: {
        auto const *const key = static_cast<QKeyEvent *>(event);
        return TakesKey(editor, object, key->key(), key->modifiers());
    }
    case QEvent::ShortcutOverride:
        // The dialog around the list does not close.
        if (static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
            event->accept();
            return true;
        }
        return false;
    case QEvent::FocusOut:
        LeaveFocus(editor);
        return false;
    default:
        return false;
    }
}

} // namespace zelvar
