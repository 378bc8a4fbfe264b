#pragma once

#include "zelvar/data/DriverOptions.h"

namespace zelvar {

/// What the readers' drivers say of their options; which of them would read a file.
extern OptionQuestions const kOptionsInReaders;

} // namespace zelvar
