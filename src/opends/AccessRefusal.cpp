#include "zelvar/opends/AccessRefusal.h"

#include "zelvar/base/Report.h"
#include "zelvar/model/OpenOutcome.h"
#include "zelvar/platform/ui/Text.h"

namespace zelvar {

namespace {

DString Shown(DString const &place) { return platform::ToDString(platform::ToShownName(place)); }

} // namespace

void TellNoAccess(DString const &place) { Report::UserNotification("Cannot access %s", Shown(place).c_str()); }

void TellNoPath(DString const &path, DError const &error) {
    if (error.IsSet())
        Report::UserNotification("Cannot access '%s' path: %s", Shown(path).c_str(), CauseInWords(error).c_str());
    else
        Report::UserNotification("Cannot access '%s' path", Shown(path).c_str());
}

} // namespace zelvar
