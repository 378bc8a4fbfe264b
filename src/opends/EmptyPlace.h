#pragma once

#include "zelvar/model/DataSourceItem.h"
#include "zelvar/platform/ui/MessageTarget.h"
#include "zelvar/platform/ui/WindowMessage.h"

#include <chrono>
#include <list>
#include <memory>
#include <vector>

namespace zelvar {

class DSListCtrl;
class Errand;
template <class Value>
class Handover;

/// Notices why a list has no rows, and says so: an empty list alone looks like one that is still to be filled. A server
/// has listed a place in which nothing can be picked here, or a folder is not there any more, may not be read or does
/// not answer: places that were shown once come back without anybody asking about them. About folders a thread asks, so
/// that no window waits for a file server that has gone. User-interface thread.
class EmptyPlace {
public:
    /// `message` is posted to `target` when an answer about a folder has come.
    EmptyPlace(platform::MessageTarget target, platform::MessageId message);
    ~EmptyPlace();
    EmptyPlace(EmptyPlace const &) = delete;
    EmptyPlace &operator=(EmptyPlace const &) = delete;

    /// To be called a few times a second. `folders` are the lists that may show folders of the place. True once for a
    /// folder that turns out to be missing.
    [[nodiscard]] bool Look(DSListCtrl const &items, std::vector<DSListCtrl const *> const &folders, bool isWaiting);
    /// What is to be said; empty for a place with rows, and for a moment after all rows have gone: lists of one place
    /// are filled one after the other.
    [[nodiscard]] DString Words() const;
    /// What was found out about a folder holds no more: the next look asks again. True if it was missing.
    bool Forget();

private:
    using Clock = std::chrono::steady_clock;
    using ItemList = std::list<RefItemPtr<DataSourceItem>>;

    void AskAbout(RefItemPtr<DataSourceItem> folder);

    DString m_nothing;         ///< about a place of a server
    Clock::time_point m_since; ///< that these are the words
    platform::MessageTarget m_target;
    platform::MessageId m_message;
    RefItemPtr<DataSourceItem> m_folder; ///< that is or was asked about; null for none
    std::shared_ptr<Errand> m_errand;    ///< null while nobody asks
    std::shared_ptr<Handover<DString>> m_answer;
    DString m_missing; ///< about the folder
};

} // namespace zelvar
