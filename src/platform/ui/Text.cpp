#include "zelvar/platform/ui/Text.h"

namespace zelvar::platform {

QString ToQString(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

DString ToDString(QString const &text) { return text.toStdString(); }

} // namespace zelvar::platform
