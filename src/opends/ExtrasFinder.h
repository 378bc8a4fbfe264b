#pragma once

#include "zelvar/data/DriverOptions.h"
#include "zelvar/data/StopSignal.h"
#include "zelvar/model/DataSourceExtras.h"
#include "zelvar/opends/WindowWorker.h"
#include "zelvar/platform/ui/MessageTarget.h"

#include <list>
#include <memory>
#include <optional>
#include <vector>

namespace zelvar {

/// Finds out, on a thread of its own, which import options belong to a selection: those of its first item that has any,
/// or else those of the driver that reads the first item.
/// However much is selected, the windows do not wait for it.
class ExtrasFinder final : public WindowWorker {
public:
    using ItemList = std::list<RefItemPtr<DataSourceItem>>;

    static std::shared_ptr<ExtrasFinder> Create() { return std::shared_ptr<ExtrasFinder>(new ExtrasFinder); }

    /// Once, before the first question. `target` gets `message` when there is an answer to take.
    void SetOwner(platform::MessageTarget target, platform::MessageId message);
    /// Asks about a selection in place of the one before. `extras` are copied. Without `Drivers::Ask` they are all that
    /// counts. `driverId` is that of the driver that is to read the first item, empty where that is to be found out.
    enum class Drivers { Leave, Ask };
    void Ask(DataSourceExtras const &extras, ItemList items, Drivers drivers = Drivers::Leave, DString driverId = {});
    void Cancel() override;

    /// Whether an answer is under way. With `wait`, returns as soon as none is, or when that time is over.
    [[nodiscard]] bool IsBusy(std::chrono::milliseconds wait = {}) const;
    /// Moves the answer to the last question out; nothing if there is none since the last call.
    struct Answer {
        boost::shared_ptr<DataSourceExtras::Item> options; ///< null: no item has any
        DString driverId{};                                ///< where it was asked for and there are no others
        std::shared_ptr<DriverOptionLists const> lists{};  ///< that driver's; may be null
    };
    [[nodiscard]] std::optional<Answer> TakeAnswer();

private:
    ExtrasFinder() = default;
    struct Question {
        DataSourceExtras extras;
        ItemList items;
        Drivers drivers = Drivers::Leave;
        DString driverId;
    };
    void TellDriverOf(Question const &question, Answer &answer) const;
    bool WorkOnNext() override;

    std::optional<Question> m_pending;
    std::optional<Answer> m_answer;
    StopSignal m_stop{false};
    platform::MessageTarget m_target;
    platform::MessageId m_message = 0;
};

} // namespace zelvar
