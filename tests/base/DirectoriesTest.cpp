#include "zelvar/base/Directories.h"

#include "support/Test.h"

namespace zelvar {
namespace {

/// Variables of the environment for the life of one test; a value that is not there unsets its variable.
class Environment : test::Pinned {
public:
    using Values = std::map<DString, std::optional<DString>>;

    explicit Environment(Values const &values) {
        for (auto const &[name, value] : values) {
            char const *const former = std::getenv(name.c_str());
            m_former[name] = former == nullptr ? std::nullopt : std::optional<DString>(former);
        }
        Set(values);
    }
    ~Environment() { Set(m_former); }

private:
    static void Set(Values const &values) {
        for (auto const &[name, value] : values) {
            if (value)
                setenv(name.c_str(), value->c_str(), 1);
            else
                unsetenv(name.c_str());
        }
    }
    Values m_former;
};

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
        Environment const environment({{"ZELVAR_SETTINGS", told},
                                       {"ZELVAR_DEFINITIONS_DIR", told},
                                       {"XDG_CONFIG_HOME", configuration},
                                       {"HOME", home}});
        EXPECT_EQ(GetSettingsFile(), settings);
        EXPECT_EQ(GetDataSourceDefinitionsDir(), definitions);
    }
}

TEST(Directories, TemplatesComeWithTheInstallation) {
    Environment const environment({{"ZELVAR_TEMPLATES_DIR", std::nullopt}, {"ZELVAR_INSTALL_DIR", "/opt/zelvar/"}});
    EXPECT_EQ(GetDataSourceTemplatesDir(), "/opt/zelvar/share/zelvar/templates");
    Environment const none(Environment::Values{{"ZELVAR_INSTALL_DIR", std::nullopt}});
    EXPECT_TRUE(GetInstallDir().starts_with('/'));
}

} // namespace
} // namespace zelvar
