#include <QtWidgets/QApplication>

void PrepareBenches(int &argc, char **argv);

void PrepareBenches(int &argc, char **argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    static QApplication const application(argc, argv);
}
