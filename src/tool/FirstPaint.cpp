#include "zelvar/tool/FirstPaint.h"

#include <QtCore/QEvent>
#include <QtCore/QTimer>
#include <QtWidgets/QWidget>

#include <cstdio>
#include <ctime>
#include <fstream>
#include <sstream>
#include <string>

#include <unistd.h>

namespace zelvar::tool {

namespace {

/// From the kernel's record of when this process began, to 10 ms.
double MillisecondsSinceStart() {
    std::ifstream file("/proc/self/stat");
    std::string line;
    std::getline(file, line);
    std::istringstream fields(line.substr(line.rfind(')') + 2));
    std::string field;
    constexpr int kStartTime = 20; // fields behind the name
    for (int i = 0; i < kStartTime; ++i)
        fields >> field;
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    double const started = std::stod(field) * 1000.0 / static_cast<double>(sysconf(_SC_CLK_TCK));
    return static_cast<double>(now.tv_sec) * 1000.0 + static_cast<double>(now.tv_nsec) / 1e6 - started;
}

class PaintWatch final : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override {
        if (event->type() == QEvent::Paint) {
            watched->removeEventFilter(this);
            // Behind the paint events of the children, which come in the same pass.
            QTimer::singleShot(0, this, [] {
                std::fprintf(stderr, "first paint %.1f ms after the start\n", MillisecondsSinceStart());
            });
        }
        return false;
    }
};

} // namespace

void TraceFirstPaint(QWidget &window) {
    if (qEnvironmentVariableIsSet("ZELVAR_TRACE_FIRST_PAINT"))
        window.installEventFilter(new PaintWatch(&window));
}

} // namespace zelvar::tool
