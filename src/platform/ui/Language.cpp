#include "zelvar/platform/ui/Language.h"

#include "zelvar/base/Catalogue.h"
#include "zelvar/base/Directories.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/base/Translation.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QLibraryInfo>
#include <QtCore/QPointer>
#include <QtCore/QTranslator>

#include <atomic>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <unordered_map>

namespace zelvar {

namespace {

constexpr char kPseudo[] = "x-pseudo";
constexpr char kVariable[] = "ZELVAR_LANGUAGE";

bool g_chosen = false; // user-interface thread only
constinit std::atomic<Catalogue const *> g_catalogue = nullptr;

char const *FindInCatalogue(char const *text, char const *, long long count) {
    return g_catalogue.load(std::memory_order_acquire)->Find(text, count);
}

char const *FindPseudo(char const *, char const *english, long long) {
    static std::mutex &mutex = *new std::mutex;
    static auto &made = *new std::unordered_map<DString, DString>; // its texts never move
    std::lock_guard const lock(mutex);
    auto const [at, isNew] = made.try_emplace(english);
    if (isNew)
        at->second = PseudoText(english);
    return at->second.c_str();
}

/// The toolkit's texts in the pseudo-language.
class PseudoTranslator final : public QTranslator {
public:
    using QTranslator::QTranslator;
    [[nodiscard]] QString translate(char const *, char const *text, char const *, int) const override {
        return platform::ToQString(PseudoText(text));
    }
    [[nodiscard]] bool isEmpty() const override { return false; }
};

/// Puts it in the place of the former one, which it owns; null for none.
void UseToolkitTranslator(std::unique_ptr<QTranslator> translator) {
    static QPointer<QTranslator> current; // the application's child
    delete current.data();                // which takes it out
    if (translator == nullptr || qApp == nullptr)
        return;
    translator->setParent(qApp);
    current = translator.release();
    QCoreApplication::installTranslator(current);
}

/// Catalogues stay to the end: their texts are in use.
bool LoadCatalogue(DString const &language) {
    static auto &loaded = *new std::deque<std::pair<DString, Catalogue>>;
    auto at = std::find_if(loaded.begin(), loaded.end(), [&](auto const &one) { return one.first == language; });
    if (at == loaded.end()) {
        DString const file = AppendPath(GetInstallDir(), "share/zelvar/translations/zelvar_" + language + ".mo");
        std::optional<Catalogue> catalogue = Catalogue::Load(file);
        if (!catalogue)
            return false;
        at = loaded.emplace(loaded.end(), language, std::move(*catalogue));
    }
    g_catalogue.store(&at->second, std::memory_order_release);
    return true;
}

std::unique_ptr<QTranslator> LoadToolkitCatalogue(DString const &language) {
    auto translator = std::make_unique<QTranslator>();
    bool const found =
        translator->load("qtbase_" + platform::ToQString(language), QLibraryInfo::path(QLibraryInfo::TranslationsPath));
    return found ? std::move(translator) : nullptr;
}

/// The first of these that there is a catalogue of; English if there is none.
void UseFirstOf(std::vector<DString> const &languages) {
    for (DString const &language : languages)
        if (LoadCatalogue(language)) {
            SetTranslationHook(&FindInCatalogue);
            UseToolkitTranslator(LoadToolkitCatalogue(language));
            return;
        }
    SetTranslationHook(nullptr);
    UseToolkitTranslator(nullptr);
}

void Use(DString const &language) {
    if (language == kPseudo) {
        SetTranslationHook(&FindPseudo);
        UseToolkitTranslator(std::make_unique<PseudoTranslator>());
        return;
    }
    // One that is named is read as the user's would be.
    UseFirstOf(UserLanguages([&language](char const *name) {
        return language.empty() ? std::getenv(name) : DString("LANG") == name ? language.c_str() : nullptr;
    }));
}

} // namespace

void UseLanguage(DString const &language) {
    g_chosen = true;
    char const *const told = language.empty() ? std::getenv(kVariable) : nullptr;
    Use(told == nullptr ? language : told);
}

void BeginWithUsersLanguage() {
    if (g_chosen || qApp == nullptr) // without windows there is nothing to show
        return;
    UseLanguage("");
    g_chosen = false;
}

} // namespace zelvar
