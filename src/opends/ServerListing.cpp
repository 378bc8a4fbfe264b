#include "zelvar/opends/ServerListing.h"

#include "zelvar/model/ListingsShared.h"

#include <utility>

namespace zelvar {

std::shared_ptr<ServerListing> ServerListing::Start(FolderListingWorker::Request request, Order const &order) {
    std::shared_ptr<ServerListing> listing(new ServerListing);
    listing->m_worker.SetMode(order.mode);
    listing->m_worker.SetSort(order.sort, order.ascending);
    if (ListingsShared const *const shared = ListingsShared::Current())
        request.together = shared->Number();
    listing->m_worker.SetRequest(std::move(request));
    listing->m_worker.SetInterrupt([stop = &listing->m_stop] { return stop->load(); });
    listing->m_worker.PublishAsFound();
    listing->m_self = listing;
    if (listing->DThread::Start())
        return listing;
    listing->m_self.reset();
    return nullptr;
}

void ServerListing::Release() {
    m_stop = true;
    Abandon(); // the thread holds this object until it has ended
}

void ServerListing::Run() {
    // The last owner may be this thread.
    std::shared_ptr<ServerListing> const self = std::move(m_self);
    m_worker.Run();
    m_isAtWork = false;
}

} // namespace zelvar
