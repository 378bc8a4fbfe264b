#pragma once

#include "zelvar/data/RDIDriver.h"
#include "zelvar/model/DataSourceItem.h"
#include "zelvar/model/ItemProperties.h"
#include "zelvar/opends/OpenFactsReading.h"
#include "zelvar/opends/WindowWorker.h"
#include "zelvar/pixels/DCanvas.h"
#include "zelvar/platform/ui/MessageTarget.h"

#include <memory>
#include <optional>

namespace zelvar {

/// Reads properties and a preview of one item after the other on a thread of its own.
///
/// What crosses goes through the members under their locks; the messages only tell that it is there. At most one job
/// waits; a newer one replaces it, and the one under way is told to stop.
class ZELVAR_API PropertyWorker final : public WindowWorker {
public:
    static std::shared_ptr<PropertyWorker> Create() { return std::shared_ptr<PropertyWorker>(new PropertyWorker); }

    /// Once, before the first job. The window that `target` stands for gets the messages.
    void SetOwner(platform::MessageTarget target, DLGTemplate dlgTemplate);
    /// From now on what the properties and the picture tell of an item is kept as `Seen`, too.
    void WantFacts(OpenWish wish) { m_wish = wish; }

    /// Hands over a job and starts a thread if none is at work. Never waits for a read.
    void Restart(RefItemPtr<DataSourceItem> item, DString format, DString options);
    /// Before the first job: behind each picture its values are read, too.
    void WantValues() { m_wantsValues = true; }
    /// Reads another picture of the item that was handed over last. A newer choice takes the place of one that waits or
    /// is being read; what is read of the item first is finished before.
    void Look(PreviewChoice const &choice);
    void Cancel() override;
    [[nodiscard]] bool IsBusy() const;

    // Two messages can wait when the results of the second job are there already: the first takes them, the second
    // finds nothing new.
    /// Moves the finished properties out; nothing if there are none since the last call.
    [[nodiscard]] std::optional<PropertyMap> TakeProps();
    /// The same for the picture, which is empty where the read has failed.
    [[nodiscard]] std::optional<DCanvas> TakeCanvas();
    /// The values of the picture, moved out with the properties.
    [[nodiscard]] std::optional<PreviewValues> TakeValues();
    /// An item that its listing could not classify in time, and whether it is a container, moved out with the
    /// properties.
    struct Classified {
        RefItemPtr<DataSourceItem> item;
        bool isContainer = false;
    };
    [[nodiscard]] std::optional<Classified> TakeClassified();
    /// What opening the item has shown, moved out: once with the properties, and again for what else there is to say.
    struct Seen {
        OpenSubject subject;
        OpenFacts facts;
    };
    [[nodiscard]] std::optional<Seen> TakeSeen();
    /// Whether there is something for it to take.
    [[nodiscard]] bool HasSeen() const;

private:
    PropertyWorker() = default;
    struct Job {
        RefItemPtr<DataSourceItem> item;
        bool unclassified = false; ///< by the listing that made the item
        DString format;
        DString options;
        std::optional<OpenWish> wish;
        std::optional<PreviewChoice> look; ///< a picture alone
    };
    void Give(Job job);
    bool WorkOnNext() override;
    void Work(Job const &job);
    void Classify(Job const &job);
    /// False if it is not what the dialog picks.
    bool ReadProps(Job const &job, Seen &seen);
    bool ReadCanvas(Job const &job, Seen &seen);
    /// Where several drivers could read it the user may choose.
    void FindDrivers(Job const &job, Seen &seen);
    void Keep(Seen seen);
    /// The picture is told of: what is still read gives way to another look. False if one waits.
    [[nodiscard]] bool MayLinger();
    void ReadValues(Job const &job, Seen const &seen);

    Job m_pending;           ///< of no item where none waits
    bool m_givesWay = false; ///< what is under way ends when another look comes
    StopSignal m_cancel{false};

    DMutex m_canvasLock;
    std::optional<DCanvas> m_canvas;       ///< nothing once taken
    std::optional<PreviewValues> m_values; ///< the same

    mutable DMutex m_propsLock;
    std::optional<PropertyMap> m_props; ///< nothing once taken
    std::optional<Classified> m_classified;
    std::optional<Seen> m_seen;

    std::optional<OpenWish> m_wish; ///< of the user-interface thread
    Job m_last;                     ///< of the user-interface thread
    bool m_wantsValues = false;
    platform::MessageTarget m_target;
    DLGTemplate m_dlgTemplate = DT_DATA;
};

} // namespace zelvar
