#include "support/GuiTest.h"
#include "support/TestFiles.h"
#include "zelvar/platform/ui/Language.h"

#include <QtCore/QStandardPaths>
#include <QtGui/QFont>
#include <QtWidgets/QApplication>
#include <QtWidgets/QStyleFactory>

#include <gtest/gtest.h>

#include <optional>

int main(int argc, char **argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleTest(&argc, argv);
    zelvar::test::SandboxEnvironment const sandbox;
    QStandardPaths::setTestModeEnabled(true);
    QApplication const application(argc, argv);
    QApplication::setStyle(QStyleFactory::create("Fusion"));
    QFont::insertSubstitutions("MS Shell Dlg", {"Liberation Sans", "Arial"});
    QFont font("Liberation Sans");
    bool scaled = false;
    double const scale = qEnvironmentVariable("ZELVAR_FONT_SCALE").toDouble(&scaled); // for pictures
    font.setPixelSize(scaled ? qRound(12 * scale) : 12);
    QApplication::setFont(font);
    if (qEnvironmentVariable("ZELVAR_LANGUAGE") != "") // for pictures
        zelvar::UseLanguage("");
    std::optional<zelvar::test::DarkPalette> dark;
    if (qEnvironmentVariable("ZELVAR_PALETTE") == "dark") // for pictures
        dark.emplace();
    for (Qt::UIEffect const effect : {Qt::UI_AnimateMenu, Qt::UI_AnimateCombo, Qt::UI_AnimateTooltip})
        QApplication::setEffectEnabled(effect, false);
    return RUN_ALL_TESTS();
}
