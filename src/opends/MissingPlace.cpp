#include "zelvar/opends/MissingPlace.h"

#include "zelvar/base/Translation.h"
#include "zelvar/data/PlaceCheck.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/model/OpenOutcome.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/connections/Errand.h"
#include "zelvar/platform/ui/Text.h"

#include <filesystem>
#include <utility>

namespace zelvar {

namespace {

bool HasRows(DSListCtrl const &list) { return list.GetNumRow() > (list.ShowParentFolderItem() ? 1 : 0); }

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

MissingPlace::MissingPlace(platform::MessageTarget target, platform::MessageId message)
    : m_target(std::move(target)), m_message(message) {}

MissingPlace::~MissingPlace() { Turn(nullptr, {}); }

bool MissingPlace::Look(DSListCtrl const &items) {
    DSListCtrl::ItemList roots;
    if (!HasRows(items) && !items.IsShowingResults())
        items.GetRootItems(roots);
    RefItemPtr<DataSourceItem> const root = roots.size() == 1 ? roots.front() : nullptr;
    DString const path = dynamic_cast<NtwDataSourceItem *>(root.get()) == nullptr ? DString() : root->GetPath();
    if (!path.starts_with('/')) // what servers list tells its failures itself
        Turn(nullptr, {});
    else if (root != m_root)
        Turn(root, path);
    if (m_errand == nullptr || m_errand->IsAtWork())
        return false;
    std::exchange(m_errand, nullptr)->Release();
    for (DString &words : m_answer->TakeAll())
        m_words = std::move(words);
    return !m_words.empty();
}

bool MissingPlace::Forget() {
    bool const wasMissing = !m_words.empty();
    if (wasMissing)
        Turn(nullptr, {});
    return wasMissing;
}

void MissingPlace::Turn(RefItemPtr<DataSourceItem> root, DString const &path) {
    if (m_errand != nullptr)
        std::exchange(m_errand, nullptr)->Release();
    m_words.clear();
    m_root = std::move(root);
    if (m_root == nullptr)
        return;
    m_answer = std::make_shared<Handover<DString>>();
    DString const name = platform::ToDString(platform::ToShownName(m_root->GetName()));
    m_errand = Errand::Start(
        [path, name, answer = m_answer](StopSignal const &) {
            if (DError const why = WhyMissing(path); why.IsSet())
                answer->Put(Format(Translated("%s cannot be opened: %s"), name.c_str(), CauseInWords(why).c_str()));
        },
        m_target, m_message);
}

} // namespace zelvar
