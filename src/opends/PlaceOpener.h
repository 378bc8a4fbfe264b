#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/model/TemplDataSourceItem.h"
#include "zelvar/opends/WindowWorker.h"
#include "zelvar/platform/ui/MessageTarget.h"

#include <memory>
#include <optional>
#include <vector>

namespace zelvar {

/// Opens connections and looks for addresses that were typed, one after the other on a thread of its own: a server may
/// take as long as it likes. A newer question takes the place of the one before, whose connections are closed at once.
class PlaceOpener final : public WindowWorker {
public:
    static std::shared_ptr<PlaceOpener> Create() { return std::shared_ptr<PlaceOpener>(new PlaceOpener); }

    /// Whether a place that somebody names is to be looked for here: an address, or a connection by its name.
    [[nodiscard]] static bool IsFor(DString const &place);
    /// The address of what lists data on a server: of a map service its connection, else what stands before the last
    /// name. The data's own where neither is known.
    [[nodiscard]] static DString PlaceOf(DString const &data);

    /// Once, before the first question. `target` gets `message` when there is something to take.
    void SetOwner(platform::MessageTarget target, platform::MessageId message);
    /// Opens the tree of a connection. The item itself is left alone: it finds the tree with `TakeOpened`.
    void Open(TemplDataSourceItem &connection);
    /// With names of data the answer is what lists them below the place, or the place itself if they are not found
    /// within a few seconds: a map service has its layers in groups.
    void Find(DString place, std::vector<DString> data = {});
    void Cancel() override;
    [[nodiscard]] bool IsBusy() const;

    struct Answer {
        DString place{};                   ///< that was to be found; empty for a connection
        RefItemPtr<DataSourceItem> item{}; ///< null for a place that was not found
        DError error{};                    ///< why it is not open; not set if it is
    };
    /// Moves the answer out; nothing if there is none since the last call.
    [[nodiscard]] std::optional<Answer> TakeAnswer();

private:
    PlaceOpener() = default;
    struct Question {
        DString place{};
        RefItemPtr<DataSourceItem> connection{}; ///< a clone; null for a place
        std::vector<DString> data{};             ///< names of an item below the place; empty for the place itself
    };
    void Ask(Question question);
    bool WorkOnNext() override;
    [[nodiscard]] Answer AnswerTo(Question const &question);

    std::optional<Question> m_pending;
    std::optional<Answer> m_answer;
    StopSignal m_stop{false}; ///< also while nothing is asked
    platform::MessageTarget m_target;
    platform::MessageId m_message = 0;
};

} // namespace zelvar
