#pragma once

#include "zelvar/model/DataSourceItem.h"
#include "zelvar/platform/ui/MessageTarget.h"
#include "zelvar/platform/ui/WindowMessage.h"

#include <memory>

namespace zelvar {

class DSListCtrl;
class Errand;
template <class Value>
class Handover;

/// Notices that the folder whose list is empty is not there any more, may not be read or does not answer, and says so:
/// places that were shown once come back without anybody asking about them. A thread asks, so that no window waits for
/// a file server that has gone. User-interface thread.
class MissingPlace {
public:
    /// `message` is posted to `target` when an answer has come.
    MissingPlace(platform::MessageTarget target, platform::MessageId message);
    ~MissingPlace();
    MissingPlace(MissingPlace const &) = delete;
    MissingPlace &operator=(MissingPlace const &) = delete;

    /// To be called a few times a second. True once for a place that turns out to be missing.
    [[nodiscard]] bool Look(DSListCtrl const &items);
    /// What is to be said; empty for a place that is there, or not known to be missing.
    [[nodiscard]] DString const &Words() const { return m_words; }
    /// What was found out holds no more. False, and nothing done, if nothing is missing.
    bool Forget();

private:
    void Turn(RefItemPtr<DataSourceItem> root, DString const &path);

    platform::MessageTarget m_target;
    platform::MessageId m_message;
    RefItemPtr<DataSourceItem> m_root; ///< that is or was asked about
    std::shared_ptr<Errand> m_errand;  ///< null while nobody asks
    std::shared_ptr<Handover<DString>> m_answer;
    DString m_words;
};

} // namespace zelvar
