#include "zelvar/opends/PropertyWorker.h"

#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/opends/DSMessages.h"

#include <utility>

namespace zelvar {

void PropertyWorker::Release() {
    Cancel();
    Abandon(); // the thread holds this object until it has ended
}

void PropertyWorker::SetOwner(platform::MessageTarget target, DLGTemplate dlgTemplate) {
    m_target = std::move(target);
    m_dlgTemplate = dlgTemplate;
}

void PropertyWorker::Restart(RefItemPtr<DataSourceItem> item, DString format, DString options) {
    auto const *const file = dynamic_cast<NtwDataSourceItem const *>(item.get());
    bool const unclassified = file != nullptr && file->MayTurnOutContainer();
    {
        DSingleLock const lock(m_stateLock);
        m_pending = {std::move(item), unclassified, std::move(format), std::move(options)};
        m_cancel = true;
        if (m_running)
            return; // the thread at work sees the signal and takes the job itself
        m_running = true;
        m_self = shared_from_this();
    }
    Finish(); // the former body has ended; its thread is about to
    if (!Start()) {
        DSingleLock const lock(m_stateLock);
        m_running = false;
        m_self.reset();
    }
}

void PropertyWorker::Cancel() {
    DSingleLock const lock(m_stateLock);
    m_pending = {};
    m_cancel = true;
}

bool PropertyWorker::IsBusy() const {
    DSingleLock const lock(m_stateLock);
    return m_running;
}

std::optional<PropertyMap> PropertyWorker::TakeProps() {
    DSingleLock const lock(m_propsLock);
    return std::exchange(m_props, std::nullopt);
}

std::optional<DCanvas> PropertyWorker::TakeCanvas() {
    DSingleLock const lock(m_canvasLock);
    return std::exchange(m_canvas, std::nullopt);
}

std::optional<PropertyWorker::Classified> PropertyWorker::TakeClassified() {
    DSingleLock const lock(m_propsLock);
    return std::exchange(m_classified, std::nullopt);
}

bool PropertyWorker::TakeJob(Job &job) {
    DSingleLock const lock(m_stateLock);
    job = std::exchange(m_pending, {});
    if (job.item == nullptr) {
        m_running = false;
        m_self.reset(); // the body still holds it
        return false;
    }
    m_cancel = false;
    return true;
}

void PropertyWorker::Run() {
    // The last owner may be this thread.
    std::shared_ptr<PropertyWorker> const self = shared_from_this();
    for (Job job; TakeJob(job);)
        Work(job);
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

void PropertyWorker::Work(Job const &job) {
    DString const path = job.item->GetPath();
    // The driver id takes the place of the format, even when it is empty: the format only tells jobs apart.
    DString const driverId = job.item->GetRDIDriverId();
    bool ok = false;
    if (!path.empty()) {
        Classify(job);
        PropertyMap props;
        ok = ReadItemProperties(path, driverId, job.options, m_dlgTemplate, &m_cancel, props);
        {
            DSingleLock const lock(m_propsLock);
            m_props = std::move(props);
        }
        m_target.Post(WM_ITEM_PROPPERTY_MAP_READY);
        if (ok && !PicksDocument(m_dlgTemplate)) {
            DCanvas canvas;
            ok = ReadItemPreview(path, driverId, job.options, &m_cancel, canvas) && !m_cancel;
            DSingleLock const lock(m_canvasLock);
            m_canvas = std::move(canvas);
        }
    }
    if (ok)
        m_target.Post(WM_ITEM_CANVAS_READY, 1);
    else if (!m_cancel)
        m_target.Post(WM_ITEM_CANVAS_READY, 0);
}

} // namespace zelvar
