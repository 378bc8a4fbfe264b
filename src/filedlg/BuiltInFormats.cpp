#include "zelvar/filedlg/BuiltInFormats.h"

namespace zelvar {

BuiltInFormats &BuiltInFormats::Instance() {
    static auto &formats = *new BuiltInFormats; // never destroyed: a dialog of a static object may outlive it
    return formats;
}

namespace {

[[maybe_unused]] BuiltInFormats const &g_madeAtLoad = BuiltInFormats::Instance();

} // namespace

} // namespace zelvar
