#include "zelvar/platform/ui/Language.h"

#include "support/GuiTest.h"
#include "zelvar/platform/ui/Text.h"

namespace zelvar::platform {
namespace {

TEST(Language, IsTheChosenOneOrTheNearestOrEnglishAndAnApplicationsChoiceStays) {
    test::Rows<char const *, char const *> const rows{
        {"de", "Abbrechen"},         {"en", "Cancel"}, {"de_AT.UTF-8", "Abbrechen"}, {"xx", "Cancel"},
        {"x-pseudo", "⟦Cancel~ o⟧"}, {"", "Cancel"},   {"de", "Abbrechen"}};
    for (auto const &[language, cancel] : rows) {
        UseLanguage(language);
        EXPECT_EQ(Shown("Cancel"), cancel) << language;
        EXPECT_EQ(QApplication::translate("QPlatformTheme", "Nobody translates this").startsWith(u'⟦'),
                  DString(language) == "x-pseudo");
    }
    BeginWithUsersLanguage();
    EXPECT_EQ(Shown("Cancel"), "Abbrechen");
    UseLanguage("en");
}

} // namespace
} // namespace zelvar::platform
