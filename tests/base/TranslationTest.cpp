#include "zelvar/base/Translation.h"

#include "support/Test.h"
#include "zelvar/base/Catalogue.h"
#include "zelvar/base/Directories.h"
#include "zelvar/base/Report.h"

namespace zelvar {
namespace {

TEST(Catalogue, HasTextsAndTheirFormsAndWithstandsDamage) {
    DString const file = GetInstallDir() + "/share/zelvar/translations/zelvar_de.mo";
    std::optional<Catalogue> const german = Catalogue::Load(file);
    ASSERT_TRUE(german) << file;
    EXPECT_STREQ(german->Find("Cancel", 1), "Abbrechen");
    EXPECT_STREQ(german->Find("%1 row", 1), "%1 Zeile");
    EXPECT_STREQ(german->Find("%1 row", 0), "%1 Zeilen");
    for (char const *unknown : {"", "Cance", "Cancel ", "%1 rows", "\xFF"})
        EXPECT_EQ(german->Find(unknown, 1), nullptr) << unknown;

    test::TempFolder const folder;
    DString const whole = test::ReadFile(file);
    auto const findIn = [&](DString const &bytes) {
        std::optional<Catalogue> const damaged = Catalogue::Load(folder.Write("damaged.mo", bytes));
        return damaged ? damaged->Find("Cancel", 2) : nullptr;
    };
    for (std::size_t size = 0; size < whole.size(); size += 1 + size / 16)
        EXPECT_EQ(findIn(whole.substr(0, size)), nullptr) << size;
    for (std::size_t at = 0; at < 28 + 80; ++at) // the header and the first entries, whatever is found then
        for (char const byte : {'\x00', '\x7F', '\xFF'})
            std::ignore = findIn(DString(whole).replace(at, 1, 1, byte));
}

TEST(Catalogue, TheUsersLanguagesAreThoseOfTheEnvironment) {
    test::Rows<std::map<DString, char const *>, std::vector<DString>> const rows{
        {{{"LANG", "de_AT.UTF-8"}}, {"de_AT", "de"}},
        {{{"LANG", "fr_FR"}, {"LC_MESSAGES", "de@euro"}}, {"de"}},
        {{{"LANG", "fr_FR"}, {"LC_ALL", "C.UTF-8"}, {"LANGUAGE", "de"}}, {}}, // scripts get English
        {{{"LANG", "de_DE"}, {"LANGUAGE", "pt_BR:../x:fr:en:de"}}, {"pt_BR", "pt", "fr"}},
        {{}, {}}};
    for (auto const &[variables, languages] : rows)
        EXPECT_EQ(UserLanguages([&environment = variables](char const *name) {
                      return environment.contains(name) ? environment.at(name) : nullptr;
                  }),
                  languages);
}

TEST(Translated, AsksTheHookForTextsAndFormsAndWhatTheUserIsTold) {
    EXPECT_STREQ(Translated("%d row", "%d rows", 0), "%d rows");
    SetTranslationHook([](char const *text, char const *english, long long count) {
        return DString(text) != "%d row" ? nullptr : count == 1 ? "eine" : DString(english) == "%d rows" ? "%d!" : "?";
    });
    EXPECT_STREQ(Translated("%d row", "%d rows", 1), "eine");
    EXPECT_STREQ(Translated("%d row", "%d rows", 2), "%d!");
    EXPECT_STREQ(Translated("Cancel"), "Cancel");
    DString told;
    auto const former = Report::SetUserHandler([&told](Report::Severity, DString const &text) { told = text; });
    Report::UserWarning("%d row", 7);
    EXPECT_EQ(told, "eine");
    Report::SetUserHandler(former);
    SetTranslationHook(nullptr);
    EXPECT_STREQ(Translated("%d row"), "%d row");
    EXPECT_EQ(PseudoText("&Save %1"), "\u27E6&Save %1~ o \u27E7");
}

} // namespace
} // namespace zelvar
