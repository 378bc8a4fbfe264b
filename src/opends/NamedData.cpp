#include "zelvar/opends/NamedData.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/base/Report.h"
#include "zelvar/base/TypedSecrets.h"
#include "zelvar/controls/GUITools.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/model/PlaceResolver.h"
#include "zelvar/opends/AccessRefusal.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/PlaceOpener.h"
#include "zelvar/platform/ui/EscapeWatch.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QMimeData>
#include <QtCore/QUrl>
#include <QtGui/QClipboard>
#include <QtGui/QDropEvent>
#include <QtGui/QGuiApplication>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QLineEdit>

#include <algorithm>
#include <tuple>

namespace zelvar {

namespace {

constexpr std::string_view kFileScheme = "file://";

/// The path behind "file:///a%20b", byte for byte; any other text as it is.
DString WithoutScheme(std::string_view text) {
    if (!StartsWithNoCase(text, kFileScheme))
        return DString(text);
    text.remove_prefix(kFileScheme.size());
    // A host may stand before the path: it is this one.
    return PercentDecoded(text.substr(std::min(text.find('/'), text.size())));
}

/// The name without the options of a moniker; what stands behind "?" in an address is its own.
DString SourceOf(DString const &name) {
    BDIMoniker const moniker(name, nullptr);
    return moniker.IsUrl() ? name : moniker.GetSource();
}

/// Waits for the place as long as the user does; null if there is none.
RefItemPtr<DataSourceItem> Find(DString const &name, DError *error) {
    GUITools::WaitCursor const cursor;
    platform::EscapeWatch watch;
    RequestScope const scope(RequestKind::List, [&watch] { return watch.IsPressed(); });
    RefItemPtr<DataSourceItem> item = ItemFromPlace(name, error);
    return watch.IsPressed() ? nullptr : item;
}

} // namespace

std::vector<DString> NamesIn(QMimeData const &data) {
    std::vector<DString> names;
    for (QUrl const &url : data.urls())
        names.push_back(WithoutScheme(url.toEncoded().toStdString()));
    if (!names.empty())
        return names;
    for (DString const &line : Split(platform::ToDString(data.text()), '\n')) {
        std::size_t const begin = line.find_first_not_of(" \t\r");
        std::size_t const end = line.find_last_not_of(" \t\r");
        if (begin != DString::npos)
            names.push_back(WithoutScheme(line.substr(begin, end - begin + 1)));
    }
    return names;
}

NamedData::NamedData(QWidget &dialog, QLineEdit &placeField, DSListCtrl &list, Actions actions)
    : m_dialog(dialog), m_list(list), m_actions(std::move(actions)) {
    dialog.setAcceptDrops(true);
    dialog.installEventFilter(this);
    placeField.installEventFilter(this);
}

DString NamedData::OptionsOf(DString const &path) const {
    auto const at = m_options.find(path);
    return at == m_options.end() ? DString() : at->second;
}

std::vector<DString> NamedData::Select(std::vector<DString> const &paths) {
    std::vector<DString> missing;
    std::vector<bool> const found = m_list.SelectPaths(paths);
    for (std::size_t i = 0; i < paths.size(); ++i)
        if (!found[i] && !BDIMoniker(paths[i], nullptr).FindFile().empty())
            missing.push_back(paths[i]);
    return missing;
}

bool NamedData::Show(std::vector<DString> const &typed, DError *error) {
    std::vector<DString> names = typed;
    std::transform(names.begin(), names.end(), names.begin(), &TakeSecrets);
    RefItemPtr<DataSourceItem> const first = names.empty() ? nullptr : Find(SourceOf(names.front()), error);
    if (first == nullptr)
        return false;
    first->BuildParents();
    RefItemPtr<DataSourceItem> const parent = first->GetParent();
    if ((first->IsFolder() && names.size() == 1) || parent == nullptr) {
        m_actions.show(first);
        return true;
    }
    std::vector<DString> paths;
    for (DString const &name : names) {
        DString const source = SourceOf(name);
        paths.push_back(source);
        m_options[source] = name.size() > source.size() ? name.substr(source.size() + 1) : DString();
    }
    m_actions.show(parent);
    if (Select(paths).empty())
        return true;
    m_actions.unfold(parent->GetPath());
    if (Select(paths).empty())
        return true;
    m_actions.widen();
    std::ignore = Select(paths); // what lies in other folders is left
    return true;
}

void NamedData::Take(QMimeData const &data) {
    std::vector<DString> const names = NamesIn(data);
    if (!names.empty() && PlaceOpener::IsFor(names.front())) {
        m_actions.goTo(TakeSecrets(names.front()));
        return;
    }
    DError error;
    if (Show(names, &error) || names.empty())
        return;
    TellNoPath(names.front(), error);
}

bool NamedData::eventFilter(QObject *watched, QEvent *event) {
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove:
        if (QMimeData const *const data = static_cast<QDropEvent *>(event)->mimeData();
            data->hasUrls() || data->hasText()) {
            static_cast<QDropEvent *>(event)->acceptProposedAction();
            return true;
        }
        break;
    case QEvent::Drop: {
        auto *const drop = static_cast<QDropEvent *>(event);
        drop->setDropAction(Qt::CopyAction); // nothing is moved from where it came
        drop->accept();
        Take(*drop->mimeData());
        return true;
    }
    case QEvent::KeyPress:
        // One name is text, to be changed before Return; several go where they belong.
        if (watched != &m_dialog && static_cast<QKeyEvent *>(event)->matches(QKeySequence::Paste))
            if (QMimeData const *const data = QGuiApplication::clipboard()->mimeData();
                data != nullptr && (data->hasUrls() || NamesIn(*data).size() > 1)) {
                Take(*data);
                return true;
            }
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace zelvar
