#include <QtWidgets/QApplication>

void PrepareBenches(int &argc, char **argv);

void PrepareBenches(int &argc, char **argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // Never deleted: behind the end of main the toolkit's own statics are already gone.
    static QApplication const *const application = new QApplication(argc, argv);
    static_cast<void>(application);
}
