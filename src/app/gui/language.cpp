#include "app/gui/language.h"

#include <QCoreApplication>
#include <QLibraryInfo>

namespace tunebox::gui {
namespace {

// Where CMake embeds the compiled translations.
const QString kOwnTranslations = QStringLiteral(":/tunebox/i18n");

}  // namespace

std::optional<Language> parseLanguage(const QString& name) {
    const QString code = name.trimmed().toLower();
    if (code == QLatin1String("ja")) {
        return Language::kJapanese;
    }
    if (code == QLatin1String("en")) {
        return Language::kEnglish;
    }
    return std::nullopt;
}

Language chooseLanguage(const QString& option, const QString& setting, const QLocale& system) {
    for (const QString& named : {option, setting}) {
        if (const std::optional<Language> language = parseLanguage(named)) {
            return *language;
        }
    }
    return system.language() == QLocale::Japanese ? Language::kJapanese : Language::kEnglish;
}

Translations::Translations(Language language) {
    if (language == Language::kEnglish) {
        return;
    }
    auto own = std::make_unique<QTranslator>();
    loaded_ = own->load(QStringLiteral("tunebox_ja"), kOwnTranslations);
    if (loaded_) {
        install(std::move(own));
    }
    // Qt's own are a nicety: without them the pickers stay in English.
    auto qt = std::make_unique<QTranslator>();
    if (qt->load(QStringLiteral("qtbase_ja"), QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        install(std::move(qt));
    }
}

void Translations::install(std::unique_ptr<QTranslator> translator) {
    QCoreApplication::installTranslator(translator.get());
    installed_.push_back(std::move(translator));
}

Translations::~Translations() {
    for (const auto& translator : installed_) {
        QCoreApplication::removeTranslator(translator.get());
    }
}

}  // namespace tunebox::gui
