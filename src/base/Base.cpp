#include "zelvar/base/Export.h"
