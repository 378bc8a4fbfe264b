#include "zelvar/tool/Screen.h"

#include "zelvar/platform/ui/UserMessages.h"

#include <QtGui/QFontInfo>
#include <QtGui/QIcon>
#include <QtWidgets/QAccessibleWidget>
#include <QtWidgets/QApplication>

#include <cstdio>

namespace zelvar::tool {

namespace {

/// Where few fonts are installed the toolkit's first choice can be one of fixed pitch.
void AvoidTypewriter() {
    QFont font = QApplication::font();
    if (!QFontInfo(font).fixedPitch())
        return;
    font.setFamilies({"Liberation Sans", "Arial", "Helvetica"});
    QApplication::setFont(font);
}

/// A window that is of no special class is a window all the same; for the toolkit it is a mere area.
QAccessibleInterface *MakeInterface(QString const &className, QObject *object) {
    auto *const widget = className == QLatin1String("QWidget") ? qobject_cast<QWidget *>(object) : nullptr;
    return widget != nullptr && widget->windowType() == Qt::Window ? new QAccessibleWidget(widget, QAccessible::Window)
                                                                   : nullptr;
}

bool HasScreen() { return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY"); }

} // namespace

bool ChoosePlatform() {
    bool const isTold = qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
    if (isTold ? !qgetenv("QT_QPA_PLATFORM").startsWith("offscreen") : HasScreen())
        return true;
    if (!isTold) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        std::fputs("zelvar: no display, running off screen\n", stderr);
    }
    if (!qEnvironmentVariableIsSet("ZELVAR_LANGUAGE"))
        qputenv("ZELVAR_LANGUAGE", "en"); // it is a script that hears what users would
    return false;
}

void PrepareWindows(Arguments const &arguments) {
    QGuiApplication::setDesktopFileName(QStringLiteral("org.example.Zelvar"));
    QGuiApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("org.example.Zelvar")));
    QAccessible::installFactory(MakeInterface);
    AvoidTypewriter();
    if (arguments.Has("--right-to-left"))
        QApplication::setLayoutDirection(Qt::RightToLeft);
}

void SpeakOnStderr() {
    platform::SetUserMessageHook([](Report::Severity, DString const &text) {
        std::fprintf(stderr, "zelvar: %s\n", text.c_str());
        return true;
    });
}

} // namespace zelvar::tool
