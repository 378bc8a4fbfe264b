#include "zelvar/model/FoldedListing.h"

#include <utility>

namespace zelvar {

namespace {

thread_local DataSetFolding t_current;

} // namespace

FoldedListing::FoldedListing(DataSetFolding folding) : m_former(std::exchange(t_current, folding)) {}

FoldedListing::~FoldedListing() { t_current = m_former; }

DataSetFolding FoldedListing::Current() { return t_current; }

} // namespace zelvar
