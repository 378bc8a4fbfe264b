#include "zelvar/props/CZelProp.h"

#include "zelvar/platform/ui/Text.h"
#include "zelvar/props/CZelPropList.h"

#include <QtGui/QFont>

#include <charconv>
#include <utility>

namespace zelvar {

namespace {

constexpr int kNameColumn = 0;
constexpr int kValueColumn = 1;

template <class Number>
Number ToNumber(DString const &text) {
    Number number{};
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

} // namespace

CZelProp::CZelProp(DString const &name) : m_isGroup(true) {
    setText(kNameColumn, platform::ToQString(name));
    setFlags(flags() & ~Qt::ItemFlags(Qt::ItemIsUserCheckable));
}

CZelProp::CZelProp(DString const &name, DString const &value, DString description, std::uint64_t data)
    : CZelProp(name, PropRule{}, value, std::move(description), data) {
    AllowEdit(false);
}

CZelProp::CZelProp(DString const &name, PropRule rule, DString const &value, DString description, std::uint64_t data)
    : m_rule(std::move(rule)), m_description(std::move(description)), m_data(data) {
    setText(kNameColumn, platform::ToQString(name));
    AllowEdit(true);
    m_original = Read(value);
    SetValue(value);
}

CZelProp::~CZelProp() {
    if (m_owner != nullptr)
        std::erase(m_owner->m_subItems, this);
    if (m_list != nullptr)
        m_list->Forget(*this);
    for (CZelProp *const prop : std::exchange(m_subItems, {})) {
        prop->m_owner = nullptr;
        if (prop->parent() != this) // the others go with this item of the tree
            delete prop;
    }
}

void CZelProp::AddSubItem(CZelProp *prop) {
    if (prop == nullptr || prop == this || prop->m_owner != nullptr || prop->m_list != nullptr)
        return;
    prop->m_owner = this;
    m_subItems.push_back(prop);
    addChild(prop);
    CZelProp const *root = this;
    while (root->m_owner != nullptr)
        root = root->m_owner;
    if (root->m_list != nullptr)
        root->m_list->Adopt(*prop);
}

CZelProp *CZelProp::GetSubItem(int index) const {
    return index >= 0 && index < GetSubItemsCount() ? m_subItems[static_cast<std::size_t>(index)] : nullptr;
}

DString CZelProp::GetName() const { return platform::ToDString(text(kNameColumn)); }

void CZelProp::SetName(DString const &name) { setText(kNameColumn, platform::ToQString(name)); }

void CZelProp::SetValue(DString const &value) {
    m_value = Read(value);
    QString const shown = platform::ToQString(m_rule.Show(m_value));
    setText(kValueColumn, shown.simplified());
    setToolTip(kValueColumn, platform::ToToolTip(shown));
}

void CZelProp::SetOriginalValue(DString const &value) {
    m_original = Read(value);
    emitDataChanged();
}

long long CZelProp::GetInt() const { return ToNumber<long long>(m_value); }

double CZelProp::GetDouble() const { return ToNumber<double>(m_value); }

void CZelProp::AllowEdit(bool allow) {
    Qt::ItemFlags const changing = Qt::ItemIsEditable | Qt::ItemIsUserCheckable;
    setFlags(allow ? flags() | changing : flags() & ~changing);
}

QString CZelProp::Spoken() const {
    if (m_isGroup)
        return text(kNameColumn);
    QString const spoken = text(kNameColumn) + QStringLiteral(": ") + text(kValueColumn);
    return TakesEntries() && IsModified() ? platform::Shown("%1, modified").arg(spoken) : spoken;
}

QVariant CZelProp::data(int column, int role) const {
    if (role == Qt::AccessibleTextRole && column == kNameColumn)
        return Spoken();
    if (role == Qt::ToolTipRole && column == kNameColumn)
        return platform::ToToolTip(m_description.empty() ? text(kNameColumn) : platform::ToQString(m_description));
    if (column == kValueColumn && role == Qt::FontRole && IsEditable() && IsModified()) {
        QFont font = treeWidget() == nullptr ? QFont() : treeWidget()->font();
        font.setBold(true);
        return font;
    }
    if (column == kValueColumn && role == Qt::CheckStateRole && m_rule.kind == PropRule::Kind::Boolean && !m_isGroup)
        return static_cast<int>(GetBool() ? Qt::Checked : Qt::Unchecked);
    return QTreeWidgetItem::data(column, role);
}

} // namespace zelvar
