#include "zelvar/opends/EmptyPlace.h"

#include "zelvar/base/Translation.h"
#include "zelvar/connections/ConnectionAddress.h"
#include "zelvar/data/BDINode.h"
#include "zelvar/data/PlaceCheck.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/model/OpenOutcome.h"
#include "zelvar/model/TemplDataSourceItem.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/connections/Errand.h"
#include "zelvar/platform/ui/Text.h"

#include <filesystem>
#include <optional>
#include <utility>

namespace zelvar {

namespace {

constexpr std::chrono::milliseconds kSettled{400};

/// About a place of a server with an empty list of items.
DString NothingIn(RefItemPtr<DataSourceItem> const &place, int nodeMask,
                  std::vector<DSListCtrl const *> const &folders) {
    auto const *const root = dynamic_cast<TemplDataSourceItem const *>(place.get());
    if (root == nullptr || !root->IsOnServer() || !root->IsOpen())
        return {};
    std::optional<ConnectionAddress> const address = ParseConnectionAddress(root->GetSource());
    bool const isDatabase = address && (address->scheme == "odbc" || address->scheme.starts_with("postgresql"));
    bool isListed = isDatabase && !root->IsRoot(); // there are no folders in a schema
    for (DSListCtrl const *const list : folders) {
        DSListCtrl::ItemList own;
        list->GetRootItems(own);
        if (own.size() != 1 || own.front() != place)
            continue;
        isListed = true;
        if (list->HasItemRows())
            return {};
    }
    if (!isListed)
        return {};
    DString words = Format(Translated("%s holds nothing that can be picked here."), root->GetName().c_str());
    if (isDatabase && (static_cast<unsigned>(nodeMask) & BDINode_Table) == 0)
        words.append(" ").append(Translated("Tables are picked where a table is to be opened."));
    return words;
}

/// A folder of the file system, or null. What servers list tells its failures itself.
RefItemPtr<DataSourceItem> AsFolder(RefItemPtr<DataSourceItem> const &place) {
    bool const isLocal =
        dynamic_cast<NtwDataSourceItem const *>(place.get()) != nullptr && place->GetPath().starts_with('/');
    return isLocal ? place : nullptr;
}

/// May wait.
DError WhyMissing(DString const &path) {
    DError why;
    if (!DoesPlaceAnswer(path)) {
        why.Set("no answer", DError::Cause::NoAnswer);
        return why;
    }
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
        std::ignore = std::filesystem::directory_iterator(path, error);
    if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory)
        why.Set(error.message(), DError::Cause::Missing);
    else if (error == std::errc::permission_denied)
        why.Set(error.message(), DError::Cause::NotPermitted);
    else if (error)
        why.Set(error.message());
    return why;
}

} // namespace

EmptyPlace::EmptyPlace(platform::MessageTarget target, platform::MessageId message)
    : m_target(std::move(target)), m_message(message) {}

EmptyPlace::~EmptyPlace() { AskAbout(nullptr); }

bool EmptyPlace::Look(DSListCtrl const &items, std::vector<DSListCtrl const *> const &folders, bool isWaiting) {
    ItemList roots;
    if (!items.HasItemRows())
        items.GetRootItems(roots);
    RefItemPtr<DataSourceItem> const place = roots.size() == 1 ? roots.front() : nullptr;
    DString nothing = isWaiting ? DString() : NothingIn(place, items.GetBDIFilter(), folders);
    if (nothing != m_nothing)
        m_since = Clock::now();
    m_nothing = std::move(nothing);
    if (RefItemPtr<DataSourceItem> folder = items.IsShowingResults() ? nullptr : AsFolder(place); folder != m_folder)
        AskAbout(std::move(folder));
    if (m_errand == nullptr || m_errand->IsAtWork())
        return false;
    std::exchange(m_errand, nullptr)->Release();
    for (DString &words : m_answer->TakeAll())
        m_missing = std::move(words);
    return !m_missing.empty();
}

DString EmptyPlace::Words() const {
    if (!m_missing.empty())
        return m_missing;
    return Clock::now() - m_since >= kSettled ? m_nothing : DString();
}

bool EmptyPlace::Forget() {
    bool const wasMissing = !m_missing.empty();
    AskAbout(nullptr);
    return wasMissing;
}

void EmptyPlace::AskAbout(RefItemPtr<DataSourceItem> folder) {
    if (m_errand != nullptr)
        std::exchange(m_errand, nullptr)->Release();
    m_missing.clear();
    m_folder = std::move(folder);
    if (m_folder == nullptr)
        return;
    m_answer = std::make_shared<Handover<DString>>();
    DString const name = platform::ToDString(platform::ToShownName(m_folder->GetName()));
    m_errand = Errand::Start(
        [path = m_folder->GetPath(), name, answer = m_answer](StopSignal const &) {
            if (DError const why = WhyMissing(path); why.IsSet())
                answer->Put(Format(Translated("%s cannot be opened: %s"), name.c_str(), CauseInWords(why).c_str()));
        },
        m_target, m_message);
}

} // namespace zelvar
