#include "zelvar/opends/PropertyWorker.h"

#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/opends/DSMessages.h"

#include <utility>

namespace zelvar {

namespace {

/// A picture may fail by its own budget, too: that says nothing of the data.
bool SpeaksAgainstData(DError::Cause cause) {
    return cause != DError::Cause::Late && cause != DError::Cause::TooLarge && cause != DError::Cause::NoAnswer;
}

} // namespace

void PropertyWorker::SetOwner(platform::MessageTarget target, DLGTemplate dlgTemplate) {
    m_target = std::move(target);
    m_dlgTemplate = dlgTemplate;
}

void PropertyWorker::Restart(RefItemPtr<DataSourceItem> item, DString format, DString options) {
    auto const *const file = dynamic_cast<NtwDataSourceItem const *>(item.get());
    bool const unclassified = file != nullptr && file->MayTurnOutContainer();
    m_last = {std::move(item), unclassified, std::move(format), std::move(options), m_wish, {}};
    Give(m_last);
}

void PropertyWorker::Look(PreviewChoice const &choice) {
    if (m_last.item == nullptr)
        return;
    Job job = m_last;
    job.look = choice;
    job.wish.reset(); // the facts of the item are told
    Give(std::move(job));
}

void PropertyWorker::Give(Job job) {
    Hand([&] {
        if (job.look && m_pending.item != nullptr && !m_pending.look)
            return false; // nothing is known yet of the item that it would be a look at
        m_cancel = m_cancel || !job.look || m_givesWay;
        m_pending = std::move(job);
        DSingleLock const values(m_canvasLock);
        m_values.reset(); // of a picture that is not wanted any more
        return true;
    });
}

void PropertyWorker::Cancel() {
    m_last = {};
    std::lock_guard const lock(m_mutex);
    m_pending = {};
    m_cancel = true;
}

bool PropertyWorker::IsBusy() const {
    std::lock_guard const lock(m_mutex);
    return IsRunning();
}

std::optional<PropertyMap> PropertyWorker::TakeProps() {
    DSingleLock const lock(m_propsLock);
    return std::exchange(m_props, std::nullopt);
}

std::optional<DCanvas> PropertyWorker::TakeCanvas() {
    DSingleLock const lock(m_canvasLock);
    return std::exchange(m_canvas, std::nullopt);
}

std::optional<PreviewValues> PropertyWorker::TakeValues() {
    DSingleLock const lock(m_canvasLock);
    return std::exchange(m_values, std::nullopt);
}

std::optional<PropertyWorker::Classified> PropertyWorker::TakeClassified() {
    DSingleLock const lock(m_propsLock);
    return std::exchange(m_classified, std::nullopt);
}

std::optional<PropertyWorker::Seen> PropertyWorker::TakeSeen() {
    DSingleLock const lock(m_propsLock);
    return std::exchange(m_seen, std::nullopt);
}

bool PropertyWorker::HasSeen() const {
    DSingleLock const lock(m_propsLock);
    return m_seen.has_value();
}

void PropertyWorker::Keep(Seen seen) {
    // What was told to stop has seen nothing of the item.
    if (m_cancel)
        return;
    {
        DSingleLock const lock(m_propsLock);
        m_seen = std::move(seen);
    }
    m_target.Post(WM_ITEM_PROPPERTY_MAP_READY);
}

bool PropertyWorker::WorkOnNext() {
    Job job;
    bool const isJob = TakeNext([&] {
        job = std::exchange(m_pending, {});
        m_cancel = false;
        m_givesWay = job.look.has_value();
        return job.item != nullptr;
    });
    if (isJob)
        Work(job);
    return isJob;
}

void PropertyWorker::Classify(Job const &job) {
    if (!job.unclassified)
        return;
    std::optional<bool> const isContainer = ClassifyAtLeisure(job.item->GetPath(), &m_cancel);
    if (!isContainer || m_cancel)
        return;
    {
        DSingleLock const lock(m_propsLock);
        m_classified = {job.item, *isContainer};
    }
    m_target.Post(WM_ITEM_PROPPERTY_MAP_READY); // the properties may take long
}

bool PropertyWorker::ReadProps(Job const &job, Seen &seen) {
    auto const &[path, driverId, options] = seen.subject;
    PropertyMap props;
    ImageInfo image;
    DError error;
    bool const ok = ReadItemProperties(path, driverId, options, m_dlgTemplate, &m_cancel, props, &error, &image);
    {
        DSingleLock const lock(m_propsLock);
        m_props = std::move(props);
    }
    m_target.Post(WM_ITEM_PROPPERTY_MAP_READY);
    if (job.wish) {
        bool const isImage = ok && !PicksDocument(m_dlgTemplate);
        seen.facts = CompleteFacts(seen.subject, *job.wish, isImage ? std::optional(std::move(image)) : std::nullopt,
                                   std::move(error), &m_cancel);
        Keep(seen);
    }
    return ok;
}

bool PropertyWorker::ReadCanvas(Job const &job, Seen &seen) {
    auto const &[path, driverId, options] = seen.subject;
    DCanvas canvas;
    DError error;
    RDIRowsRead read;
    bool const ok = ReadItemPreview(path, driverId, options, &m_cancel, canvas, Enlarge::Yes, &error, &read,
                                    job.look.value_or(PreviewChoice())) &&
                    !m_cancel;
    {
        DSingleLock const lock(m_canvasLock);
        m_canvas = std::move(canvas);
    }
    if (job.wish && error.IsSet() && SpeaksAgainstData(error.Why())) {
        seen.facts.damage = std::move(error);
        seen.facts.rowsRead = read.rows;
        seen.facts.rows = read.all;
        Keep(seen);
    }
    return ok;
}

void PropertyWorker::FindDrivers(Job const &job, Seen &seen) {
    if (!job.wish || !job.wish->image || !seen.subject.driverId.empty() || m_cancel)
        return;
    seen.facts.drivers = FindOpeningDrivers(seen.subject, &m_cancel);
    if (!seen.facts.drivers.empty())
        Keep(seen);
}

void PropertyWorker::Work(Job const &job) {
    // The driver id takes the place of the format, even when it is empty: the format only tells jobs apart.
    Seen seen{.subject = {.path = job.item->GetPath(), .driverId = job.item->GetRDIDriverId(), .options = job.options},
              .facts = {}};
    bool const isLook = job.look.has_value();
    bool ok = false;
    if (!seen.subject.path.empty()) {
        if (!isLook)
            Classify(job);
        ok = isLook || ReadProps(job, seen);
        if (ok && !PicksDocument(m_dlgTemplate))
            ok = ReadCanvas(job, seen);
    }
    if (ok)
        m_target.Post(WM_ITEM_CANVAS_READY, 1);
    else if (!m_cancel)
        m_target.Post(WM_ITEM_CANVAS_READY, 0);
    if (!seen.subject.path.empty())
        FindDrivers(job, seen);
    if (ok && m_wantsValues && !PicksDocument(m_dlgTemplate) && MayLinger())
        ReadValues(job, seen);
}

bool PropertyWorker::MayLinger() {
    std::lock_guard const lock(m_mutex);
    m_givesWay = true;
    return m_pending.item == nullptr;
}

void PropertyWorker::ReadValues(Job const &job, Seen const &seen) {
    PreviewValues values;
    auto const &[path, driverId, options] = seen.subject;
    if (!ReadItemValues(path, driverId, options, &m_cancel, job.look.value_or(PreviewChoice()), values))
        return;
    {
        DSingleLock const lock(m_canvasLock);
        if (m_cancel)
            return;
        m_values = std::move(values);
    }
    m_target.Post(WM_ITEM_PROPPERTY_MAP_READY);
}

} // namespace zelvar
