#include "zelvar/opends/ConnectionRows.h"

#include "zelvar/base/Report.h"
#include "zelvar/base/Translation.h"
#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/model/DefinitionOrder.h"
#include "zelvar/model/TemplDataSourceItem.h"
#include "zelvar/opends/DataSourceList.h"
#include "zelvar/opends/NewConnectionItem.h"
#include "zelvar/opends/TextQuestion.h"
#include "zelvar/opends/connections/ConnectionDlg.h"
#include "zelvar/opends/core/FileQuestion.h"
#include "zelvar/platform/ui/ModalLoop.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/views/RowDrag.h"

#include <QtCore/QPointer>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>

#include <algorithm>

namespace zelvar {

namespace {

platform::MessageId const kNews = platform::RegisterMessage();
platform::MessageId const kMake = platform::RegisterMessage();

/// Known by its definition, which another program may have removed by now.
std::optional<ConnectionBook::Entry> EntryOf(DString const &name) {
    std::shared_ptr<ConnectionBook const> const book = ConnectionBook::Now();
    ConnectionBook::Entry const *const entry = book->Find(name);
    return entry == nullptr ? std::nullopt : std::optional(*entry);
}

FileQuestion DefinitionFile(char const *title, bool saves) {
    return {.title = title,
            .kind = Mark("Connections (*.xml)"),
            .extension = "xml",
            .name = "connections.xml",
            .saves = saves};
}

DString Listed(std::vector<DString> const &names) {
    constexpr std::size_t most = 10;
    DString text;
    for (std::size_t i = 0; i < std::min(names.size(), most); ++i)
        text += (i == 0 ? "" : "\n") + names[i];
    return names.size() > most ? text + "\n..." : text;
}

} // namespace

/// A line of the menu, and its key.
struct ConnectionRows::Entry {
    char const *text; ///< null for a separator
    QKeySequence key; ///< empty for none
    void (*run)(ConnectionRows &rows, DString const &name);
};

std::vector<ConnectionRows::Entry> const &ConnectionRows::EntriesOfMaker() {
    static std::vector<Entry> const entries{
        {Mark("New Connection..."), Qt::Key_Insert, [](ConnectionRows &rows, DString const &) { rows.Make(); }},
        {nullptr, {}, nullptr},
        {Mark("Export All..."), {}, [](ConnectionRows &rows, DString const &) { rows.Export(rows.Names()); }},
        {Mark("Import..."), {}, [](ConnectionRows &rows, DString const &) { rows.Import(); }},
    };
    return entries;
}

std::vector<ConnectionRows::Entry> const &ConnectionRows::EntriesOfConnection() {
    using Rows = ConnectionRows;
    static std::vector<Entry> const entries{
        {Mark("Connect"), {}, [](Rows &rows, DString const &name) { rows.Connect(name); }},
        {Mark("Test"), {}, [](Rows &rows, DString const &name) { rows.Edit(name, true); }},
        {nullptr, {}, nullptr},
        {Mark("Edit..."), {}, [](Rows &rows, DString const &name) { rows.Edit(name, false); }},
        {Mark("Rename..."), Qt::Key_F2, [](Rows &rows, DString const &name) { rows.Rename(name); }},
        {Mark("Duplicate"), {}, [](Rows &rows, DString const &name) { rows.Duplicate(name); }},
        {Mark("Remove..."), Qt::Key_Delete, [](Rows &rows, DString const &name) { rows.Remove(name); }},
        {nullptr, {}, nullptr},
        {Mark("Move Up"), Qt::ALT | Qt::Key_Up, [](Rows &rows, DString const &name) { rows.Move(name, -1); }},
        {Mark("Move Down"), Qt::ALT | Qt::Key_Down, [](Rows &rows, DString const &name) { rows.Move(name, 1); }},
        {nullptr, {}, nullptr},
        {Mark("Export..."), {}, [](Rows &rows, DString const &name) { rows.Export({name}); }},
        {Mark("Import..."), {}, [](Rows &rows, DString const &) { rows.Import(); }},
        {Mark("New Connection..."), Qt::Key_Insert, [](Rows &rows, DString const &) { rows.Make(); }},
    };
    return entries;
}

ConnectionRows::ConnectionRows(DataSourceList &list)
    : m_list(list), m_target(this),
      m_drag(std::make_unique<RowDrag>(
          list, RowDrag::Rule{.isMovable = [this](int row) { return IsConnection(row); },
                              .nameOf = [this](int row) { return m_list.ItemAt(row)->GetName(); },
                              .drop = [this](int row, int beside,
                                             bool behind) { MoveBefore(row, behind ? beside + 1 : beside); }})) {
    m_messages.On(kNews, this, &ConnectionRows::OnNews);
    m_messages.On(kMake, this, &ConnectionRows::Make);
}

ConnectionRows::~ConnectionRows() {
    m_target.Detach();
    for (Job const &job : m_jobs)
        job.errand->Release(); // what it has begun it ends
}

bool ConnectionRows::event(QEvent *event) { return m_messages.Dispatch(*event) || QObject::event(event); }

// ------------------------------------------------------------------------------------------------ what is selected

std::optional<DString> ConnectionRows::Selected() const {
    int const row = m_list.GetNextItem(-1, LVNI_SELECTED);
    auto const *const item = dynamic_cast<TemplDataSourceItem const *>(m_list.ItemAt(row).get());
    return item == nullptr || m_list.GetItemGroup(row) != kGroupDataSources ? std::nullopt
                                                                            : std::optional(item->GetName());
}

bool ConnectionRows::IsMakerSelected() const {
    return IsNewConnection(m_list.ItemAt(m_list.GetNextItem(-1, LVNI_SELECTED)).get());
}

bool ConnectionRows::IsConnection(int row) const {
    RefItemPtr<DataSourceItem> const item = m_list.ItemAt(row);
    return item != nullptr && m_list.GetItemGroup(row) == kGroupDataSources && !IsNewConnection(item.get());
}

std::vector<DString> ConnectionRows::Names() const {
    std::vector<DString> names;
    for (int row = 0; row < m_list.GetItemCount(); ++row)
        if (IsConnection(row))
            names.push_back(m_list.ItemAt(row)->GetName());
    return names;
}

bool ConnectionRows::RunMenu(QPoint screenPoint) {
    std::optional<DString> const name = Selected();
    if (!name && !IsMakerSelected())
        return false;
    QMenu menu(&m_list);
    std::vector<std::pair<QAction *, Entry const *>> actions;
    bool const isOpen = name && m_list.IsConnectionOpen(*name);
    for (Entry const &entry : name ? EntriesOfConnection() : EntriesOfMaker()) {
        if (entry.text == nullptr) {
            menu.addSeparator();
            continue;
        }
        bool const disconnects = isOpen && &entry == &EntriesOfConnection().front();
        QAction *const action = menu.addAction(platform::Shown(disconnects ? Mark("Disconnect") : entry.text));
        action->setShortcut(entry.key);
        action->setShortcutVisibleInContextMenu(true);
        actions.emplace_back(action, &entry);
    }
    QAction const *const chosen = platform::RunMenu(menu, screenPoint);
    for (auto const &[action, entry] : actions)
        if (action == chosen) {
            entry->run(*this, name.value_or(DString()));
            break;
        }
    return true;
}

bool ConnectionRows::OnKey(QKeyEvent const &key) {
    std::optional<DString> const name = Selected();
    Qt::KeyboardModifiers const modifiers = key.modifiers() & ~Qt::KeypadModifier;
    QKeySequence const pressed(QKeyCombination(modifiers, static_cast<Qt::Key>(key.key())));
    std::vector<Entry> const &entries = name ? EntriesOfConnection() : EntriesOfMaker();
    auto const entry = std::find_if(entries.begin(), entries.end(),
                                    [&](Entry const &known) { return !known.key.isEmpty() && known.key == pressed; });
    if (entry == entries.end())
        return false;
    entry->run(*this, name.value_or(DString()));
    return true;
}

// --------------------------------------------------------------------------------------------------- what is done

void ConnectionRows::MakeSoon() { platform::PostMessage(this, kMake); }

void ConnectionRows::Make() {
    QPointer<ConnectionRows> const self(this);
    ConnectionDlg dialog(m_list.window());
    if (dialog.DoModal() != QDialog::Accepted || self.isNull())
        return;
    m_list.ListConnectionsAgain({dialog.SavedName()}, dialog.SavedName());
}

void ConnectionRows::Connect(DString const &name) {
    if (!m_list.IsConnectionOpen(name))
        return m_list.ResetSelectedItems();
    if (std::optional<ConnectionBook::Entry> const entry = EntryOf(name))
        EndReadersOf(ConnectionIdOf(entry->connection));
    m_list.ListConnectionsAgain({name}, {});
}

void ConnectionRows::Edit(DString const &name, bool tests) {
    std::optional<ConnectionBook::Entry> entry = EntryOf(name);
    if (!entry)
        return m_list.ListConnectionsAgain({}, {}); // it is gone
    QPointer<ConnectionRows> const self(this);
    ConnectionDlg dialog(m_list.window(), std::move(entry));
    if (tests)
        dialog.TestAtOnce();
    if (dialog.DoModal() != QDialog::Accepted || self.isNull())
        return;
    if (dialog.SavedName() != name)
        DefinitionOrder::Rename(name, dialog.SavedName());
    m_list.ListConnectionsAgain({name, dialog.SavedName()}, dialog.SavedName());
}

void ConnectionRows::Duplicate(DString const &name) {
    Start([name](StopSignal const &) { return SavedConnection{.change = DuplicateConnection(name)}; },
          [this](SavedConnection const &saved) { ShowChanged(saved); });
}

void ConnectionRows::Rename(DString const &name) {
    QPointer<ConnectionRows> const self(this);
    std::optional<DString> const answer = AskForText(m_list.window(), Mark("Rename Connection"), Mark("Name"), name);
    if (!answer || self.isNull())
        return;
    DString const newName = *answer;
    if (newName == name)
        return;
    Start([name, newName](StopSignal const &) { return SavedConnection{.change = RenameConnection(name, newName)}; },
          [this, name](SavedConnection const &saved) {
              DefinitionOrder::Rename(name, saved.change.names.front());
              ShowChanged(saved);
          });
}

void ConnectionRows::Move(DString const &name, int by) {
    std::vector<DString> names = Names();
    auto const at = std::find(names.begin(), names.end(), name);
    std::ptrdiff_t const to = at - names.begin() + by;
    if (at == names.end() || to < 0 || to >= static_cast<std::ptrdiff_t>(names.size()))
        return;
    std::iter_swap(at, names.begin() + to);
    KeepOrder(names);
}

void ConnectionRows::MoveBefore(int row, int before) {
    if (!IsConnection(row) || before == row || before == row + 1)
        return; // it stands there
    DString const name = m_list.ItemAt(row)->GetName();
    DString const next = IsConnection(before) ? m_list.ItemAt(before)->GetName() : DString();
    std::vector<DString> names = Names();
    names.erase(std::find(names.begin(), names.end(), name));
    names.insert(next.empty() ? names.end() : std::find(names.begin(), names.end(), next), name);
    KeepOrder(names);
}

void ConnectionRows::KeepOrder(std::vector<DString> const &names) {
    DefinitionOrder::Keep(names);
    m_list.ListConnectionsAgain({}, {});
}

void ConnectionRows::Remove(DString const &name) {
    std::optional<ConnectionBook::Entry> const entry = EntryOf(name);
    QPointer<ConnectionRows> const self(this);
    QMessageBox question(QMessageBox::Question, platform::Shown("Remove Connection"),
                         platform::Shown("Remove the connection \"%1\"?").arg(platform::ToQString(name)),
                         QMessageBox::Yes | QMessageBox::No, m_list.window());
    question.setTextFormat(Qt::PlainText);
    question.setDefaultButton(QMessageBox::No);
    question.button(QMessageBox::Yes)->setText(platform::Shown("Remove"));
    question.button(QMessageBox::No)->setText(platform::Shown("Cancel"));
    auto *const forgets = new QCheckBox(platform::Shown("Forget its password, too"));
    bool const isKept =
        entry && (entry->connection.secret == SecretPlace::Keyring || entry->connection.secret == SecretPlace::Ask);
    forgets->setChecked(isKept);
    if (isKept)
        question.setCheckBox(forgets); // which takes it over
    else
        forgets->setParent(&question), forgets->hide();
    if (platform::RunModal(question) != QMessageBox::Yes || self.isNull())
        return;
    bool const forget = forgets->isChecked();
    Start([name, forget](StopSignal const &stop) { return RemoveWithSecret(name, forget, &stop); },
          [this, name](SavedConnection const &) { m_list.ListConnectionsAgain({name}, {}); });
}

void ConnectionRows::Export(std::vector<DString> const &names) {
    std::optional<DString> const file = AskForFile(m_list.window(), DefinitionFile(Mark("Export Connections"), true));
    if (file)
        Start([names,
               path = *file](StopSignal const &) { return SavedConnection{.change = ExportConnections(names, path)}; },
              [](SavedConnection const &) {});
}

void ConnectionRows::Import() {
    std::optional<DString> const file = AskForFile(m_list.window(), DefinitionFile(Mark("Import Connections"), false));
    if (file)
        Start([path = *file](StopSignal const &) { return SavedConnection{.change = ConflictsOfImport(path)}; },
              [this, path = *file](SavedConnection const &saved) { AskAboutConflicts(path, saved.change.names); });
}

void ConnectionRows::AskAboutConflicts(DString const &file, std::vector<DString> const &names) {
    IfThere ifThere = IfThere::Refuse;
    if (!names.empty()) {
        QPointer<ConnectionRows> const self(this);
        QMessageBox question(QMessageBox::Question, platform::Shown("Import Connections"),
                             platform::Shown("There are connections of these names already:"), QMessageBox::NoButton,
                             m_list.window());
        question.setTextFormat(Qt::PlainText);
        question.setInformativeText(platform::ToQString(Listed(names)));
        QAbstractButton const *const keep = question.addButton(platform::Shown("Keep Both"), QMessageBox::AcceptRole);
        QAbstractButton const *const replace =
            question.addButton(platform::Shown("Replace"), QMessageBox::DestructiveRole);
        QAbstractButton const *const skip = question.addButton(platform::Shown("Skip"), QMessageBox::ActionRole);
        question.addButton(platform::Shown("Cancel"), QMessageBox::RejectRole);
        std::ignore = platform::RunModal(question);
        QAbstractButton const *const chosen = question.clickedButton();
        if (self.isNull() || (chosen != keep && chosen != replace && chosen != skip))
            return;
        ifThere = chosen == keep ? IfThere::KeepBoth : chosen == replace ? IfThere::Replace : IfThere::Skip;
    }
    Start([file, ifThere](StopSignal const &) { return SavedConnection{.change = ImportConnections(file, ifThere)}; },
          [this](SavedConnection const &saved) { ShowChanged(saved); });
}

void ConnectionRows::ShowChanged(SavedConnection const &saved) {
    std::vector<DString> const &names = saved.change.names;
    m_list.ListConnectionsAgain({names.begin(), names.end()}, names.empty() ? DString() : names.front());
}

// ---------------------------------------------------------------------------------------------------- the threads

void ConnectionRows::Start(std::function<SavedConnection(StopSignal const &)> work, Done done) {
    auto const result = std::make_shared<Handover<SavedConnection>>();
    std::shared_ptr<Errand> errand = Errand::Start(
        [work = std::move(work), result](StopSignal const &stop) { result->Put(work(stop)); }, m_target, kNews);
    if (errand == nullptr)
        Report::UserNotification("There is no thread for it now. Try again.");
    else
        m_jobs.push_back({std::move(errand), result, std::move(done)});
}

void ConnectionRows::OnNews() {
    QPointer<ConnectionRows> const self(this);
    for (auto at = m_jobs.begin(); at != m_jobs.end();) {
        if (at->errand->IsAtWork()) {
            ++at;
            continue;
        }
        Job const job = std::move(*at);
        m_jobs.erase(at);
        job.errand->Release();
        for (SavedConnection const &saved : job.result->TakeAll()) {
            if (!saved.change.isDone)
                Report::UserNotification("The connections stay as they are: %s", saved.change.words.c_str());
            else if (!saved.words.empty())
                Report::UserNotification("The connections are changed. %s", saved.words.c_str());
            if (saved.change.isDone && !self.isNull())
                job.done(saved);
        }
        if (self.isNull())
            return;
        at = m_jobs.begin(); // more may have begun
    }
}

} // namespace zelvar
