#pragma once

#include "zelvar/data/StopSignal.h"
#include "zelvar/model/DataSourceItem.h"

namespace zelvar {

/// A stop signal as listings ask for it.
class StopQuestion final : public DataSourceItem::ICancel {
public:
    explicit StopQuestion(StopSignal const &stop) : m_stop(stop) {}
    [[nodiscard]] bool IsCanceled() override { return m_stop; }

private:
    StopSignal const &m_stop;
};

} // namespace zelvar
