#include "zelvar/opends/FormPage.h"

#include "zelvar/data/options/OptionValues.h"
#include "zelvar/opends/WrapLayout.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/platform/ui/WheelPast.h"

#include <QtCore/QRegularExpression>
#include <QtWidgets/QButtonGroup>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QRadioButton>

#include <algorithm>

namespace zelvar {

namespace {

constexpr int kSpacing = 6;         // pixels between lines and between controls
constexpr int kDefaultColumns = 16; // of a text field whose page gives no size
constexpr int kMaxColumns = 40;
constexpr int kLeastColumns = 6; // that a control shrinks to in a narrow pane
constexpr int kTextColumns = 60; // of a text that nothing narrows

using Kind = FormNode::Kind;

bool BreaksLine(Kind kind) {
    return kind == Kind::Block || kind == Kind::Table || kind == Kind::LineBreak || kind == Kind::Rule;
}

QRegularExpression const kBreaks(QStringLiteral("[ \u200B]")); // a blank, or a place to break a name at

/// Text of a page: one line where there is room, up to a readable width; as narrow as its longest word where not.
class PageText final : public QLabel {
public:
    explicit PageText(QString const &text) : QLabel(text) {
        setTextFormat(Qt::PlainText);
        setWordWrap(true);
    }
    [[nodiscard]] QSize sizeHint() const override {
        int const widest = fontMetrics().averageCharWidth() * kTextColumns;
        int const width = std::min(fontMetrics().size(0, text()).width() + 1, std::max(widest, WidestWord()));
        return {width, heightForWidth(width)};
    }
    [[nodiscard]] QSize minimumSizeHint() const override { return {WidestWord(), fontMetrics().lineSpacing()}; }

private:
    [[nodiscard]] int WidestWord() const {
        int widest = 0;
        for (QString const &word : text().split(kBreaks))
            widest = std::max(widest, fontMetrics().horizontalAdvance(word) + 1);
        return widest;
    }
};

/// Text field as wide as its page says, narrower where the pane is.
class PageEdit final : public QLineEdit {
public:
    PageEdit(QString const &text, int columns) : QLineEdit(text), m_columns(columns) {
        setMaximumWidth(Width(m_columns));
        setMinimumWidth(Width(std::min(m_columns, kLeastColumns)));
    }
    [[nodiscard]] QSize sizeHint() const override { return {Width(m_columns), QLineEdit::sizeHint().height()}; }

private:
    [[nodiscard]] int Width(int columns) const { return fontMetrics().averageCharWidth() * columns + 2 * kSpacing + 4; }
    int m_columns;
};

QLabel *MakeText(FormNode const &node) {
    DString const text(Trimmed(node.text));
    if (text.empty())
        return nullptr;
    auto *label = new PageText(platform::ToQString(text));
    if (node.bold) {
        QFont font = label->font();
        font.setBold(true);
        label->setFont(font);
    }
    return label;
}

} // namespace

FormPage::FormPage(FormNode const &page, QWidget *parent) : QWidget(parent) {
    auto *lines = new QVBoxLayout(this);
    lines->setSpacing(kSpacing);
    lines->setContentsMargins(kSpacing, kSpacing, kSpacing, kSpacing);
    AddFlow(page.children, *lines);
    lines->addStretch(1);
}

std::vector<OptionField> FormPage::Fields() const {
    std::vector<OptionField> fields;
    fields.reserve(m_readers.size());
    for (Reader const &reader : m_readers)
        fields.push_back({reader.name, reader.value(), reader.isSelect});
    return fields;
}

std::map<DString, DString> FormPage::Values() const {
    std::map<DString, DString> values;
    for (auto const &[name, value] : m_values)
        values[name] = value.get();
    return values;
}

void FormPage::SetValue(DString const &name, DString const &value) {
    if (auto const at = m_values.find(name); at != m_values.end())
        at->second.set(value);
}

QLineEdit *FormPage::TextField(DString const &name) const { return findChild<QLineEdit *>(platform::ToQString(name)); }

void FormPage::AddFlow(std::vector<FormNode> const &nodes, QBoxLayout &lines) {
    std::vector<QWidget *> line;
    for (FormNode const &node : nodes) {
        if (BreaksLine(node.kind))
            AddLine(line, lines);
        if (node.kind == Kind::Block) {
            AddFlow(node.children, lines);
        } else if (node.kind == Kind::Table) {
            AddTable(node, lines);
        } else if (node.kind == Kind::Rule) {
            auto *rule = new QFrame;
            rule->setFrameShape(QFrame::HLine);
            lines.addWidget(rule);
        } else if (QWidget *widget = node.kind == Kind::Text ? MakeText(node) : MakeControl(node); widget != nullptr) {
            line.push_back(widget);
        }
    }
    AddLine(line, lines);
}

void FormPage::AddLine(std::vector<QWidget *> &line, QBoxLayout &lines) {
    if (line.empty())
        return;
    if (line.size() == 1) {
        lines.addWidget(line.front(), 0, qobject_cast<QLabel *>(line.front()) ? Qt::Alignment() : Qt::AlignLeft);
    } else {
        auto *row = new WrapLayout(kSpacing);
        for (std::size_t i = 0; i < line.size(); ++i) {
            auto *label = qobject_cast<QLabel *>(line[i]);
            if (label != nullptr && i + 1 < line.size())
                label->setBuddy(line[i + 1]); // beside a control it names it
            row->addWidget(line[i]);
        }
        lines.addLayout(row);
    }
    line.clear();
}

void FormPage::AddTable(FormNode const &table, QBoxLayout &lines) {
    auto *grid = new QGridLayout;
    grid->setHorizontalSpacing(2 * kSpacing);
    grid->setVerticalSpacing(kSpacing);
    int rowIndex = 0;
    for (FormNode const &row : table.children) {
        int column = 0;
        for (FormNode const &cell : row.children) {
            auto *content = new QVBoxLayout;
            content->setContentsMargins(0, 0, 0, 0);
            // In the middle of its row; an alignment would not let text that wraps have its height.
            content->addStretch(1);
            AddFlow(cell.children, *content);
            content->addStretch(1);
            grid->addLayout(content, rowIndex, column, 1, cell.span);
            column += cell.span;
        }
        ++rowIndex;
    }
    auto *indented = new QHBoxLayout;
    indented->addLayout(grid);
    indented->addStretch(1);
    lines.addLayout(indented);
}

QWidget *FormPage::MakeControl(FormNode const &node) {
    QString const name = platform::ToQString(node.name);
    QString const value = platform::ToQString(node.value);
    QWidget *control = nullptr;
    switch (node.kind) {
    case Kind::TextField: {
        auto *edit = new PageEdit(value, std::min(node.size > 0 ? node.size : kDefaultColumns, kMaxColumns));
        if (node.inputType == "password")
            edit->setEchoMode(QLineEdit::Password);
        if (node.inputType == "text")
            m_readers.push_back({node.name, false, [edit] { return platform::ToDString(edit->text()); }});
        m_values[node.name] = {[edit] { return platform::ToDString(edit->text()); },
                               [edit](DString const &text) { edit->setText(platform::ToQString(text)); }};
        connect(edit, &QLineEdit::editingFinished, this, &FormPage::Changed);
        connect(edit, &QLineEdit::textChanged, this, [this, edit] { Q_EMIT Typed(edit); });
        control = edit;
        break;
    }
    case Kind::TextArea: {
        auto *edit = new QPlainTextEdit(value);
        edit->setMinimumWidth(edit->fontMetrics().averageCharWidth() * kLeastColumns);
        edit->setTabChangesFocus(true);
        edit->setFixedHeight(edit->fontMetrics().lineSpacing() * std::max(node.size, 2) + 2 * kSpacing);
        control = edit;
        break;
    }
    case Kind::CheckBox: {
        auto *box = new QCheckBox;
        box->setChecked(node.checked);
        m_values[node.name] = {[box] { return DString(box->isChecked() ? "YES" : "NO"); },
                               [box](DString const &text) { box->setChecked(IsOn(text)); }};
        connect(box, &QCheckBox::clicked, this, &FormPage::Changed);
        control = box;
        break;
    }
    case Kind::RadioButton: {
        auto *radio = new QRadioButton;
        QButtonGroup *&group = m_radioGroups[node.name];
        if (group == nullptr)
            group = new QButtonGroup(this);
        group->addButton(radio);
        radio->setChecked(node.checked);
        control = radio;
        break;
    }
    case Kind::Select:
        control = MakeSelect(node);
        break;
    case Kind::Button: {
        auto *button = new QPushButton(platform::ToQString(node.text));
        button->setAutoDefault(false);
        QString const id = platform::ToQString(node.id.empty() ? node.name : node.id);
        connect(button, &QPushButton::clicked, this, [this, id] { Q_EMIT Pressed(id); });
        control = button;
        break;
    }
    default:
        return nullptr; // hidden fields take no part in the option text
    }
    control->setObjectName(name);
    control->setAccessibleName(name);
    control->setToolTip(platform::ToQString(node.hint));
    control->setAccessibleDescription(platform::ToQString(node.hint));
    control->setEnabled(!node.disabled);
    return control;
}

QWidget *FormPage::MakeSelect(FormNode const &node) {
    auto *box = new QComboBox;
    platform::LetWheelPast(*box);
    box->setMinimumWidth(box->fontMetrics().averageCharWidth() * (kLeastColumns + 2));
    for (FormChoice const &choice : node.choices) {
        box->addItem(platform::ToQString(choice.text), platform::ToQString(choice.value));
        if (choice.selected)
            box->setCurrentIndex(box->count() - 1);
    }
    m_values[node.name] = {[box] { return platform::ToDString(box->currentData().toString()); },
                           [box](DString const &text) {
                               if (int const at = box->findData(platform::ToQString(text)); at >= 0)
                                   box->setCurrentIndex(at);
                           }};
    connect(box, &QComboBox::activated, this, &FormPage::Changed);
    m_readers.push_back({node.name, true, [box] { return platform::ToDString(box->currentData().toString()); }});
    return box;
}

} // namespace zelvar
