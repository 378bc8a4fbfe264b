#include "zelvar/base/Directories.h"

#include "support/Test.h"

namespace zelvar {
namespace {

TEST(Directories, FollowTheVariableThenTheConfigurationThenTheHome) {
    test::Rows<char const *, std::optional<DString>, std::optional<DString>, std::optional<DString>, DString,
               DString> const cases = {
        {"told", "/t/x", "/c", "/h", "/t/x", "/t/x"},
        {"configuration", {}, "/c", "/h", "/c/zelvar/settings.db", "/c/zelvar/definitions"},
        {"a relative configuration does not count",
         {},
         "c",
         "/h",
         "/h/.config/zelvar/settings.db",
         "/h/.config/zelvar/definitions"},
        {"home", {}, {}, "/h/", "/h/.config/zelvar/settings.db", "/h/.config/zelvar/definitions"},
        {"nowhere", {}, {}, {}, "", ""},
        {"an empty home is none", {}, "", "", "", ""},
        // Without definitions is a choice; settings are always kept somewhere.
        {"told to be empty", "", "/c", "/h", "/c/zelvar/settings.db", ""}};
    for (auto const &[name, told, configuration, home, settings, definitions] : cases) {
        SCOPED_TRACE(name);
        test::Environment const environment({{"ZELVAR_SETTINGS", told},
                                             {"ZELVAR_DEFINITIONS_DIR", told},
                                             {"XDG_CONFIG_HOME", configuration},
                                             {"HOME", home}});
        EXPECT_EQ(GetSettingsFile(), settings);
        EXPECT_EQ(GetDataSourceDefinitionsDir(), definitions);
    }
}

TEST(Directories, TemplatesComeWithTheInstallation) {
    test::Environment const environment(
        {{"ZELVAR_TEMPLATES_DIR", std::nullopt}, {"ZELVAR_INSTALL_DIR", "/opt/zelvar/"}});
    EXPECT_EQ(GetDataSourceTemplatesDir(), "/opt/zelvar/share/zelvar/templates");
    test::Environment const none(test::Environment::Values{{"ZELVAR_INSTALL_DIR", std::nullopt}});
    EXPECT_TRUE(GetInstallDir().starts_with('/'));
}

} // namespace
} // namespace zelvar
